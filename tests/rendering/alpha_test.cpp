#include "klv/rendering/detail/clear_ground.h"
#include "klv/rendering/document.h"

#include "tests/filters/imaging.h"
#include "tests/filters/wmf_drawing.h"
#include "tests/rendering/drawing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>
#include <vector>

namespace klv {
namespace {

using test::close_page;
using test::drawn;
using test::pixel;
using test::use_solid;
using bytes = std::vector<int>;

// A rectangle whose edges lie on samples: a pixel has 4 x 4 of them, and 40 units.
TEST(Alpha, IsTheCoverageOfAPixelToTheSample)
{
    vMETAFILE picture;
    use_solid(picture, vCOLOUR(200, 100, 0));
    picture.DrawRect(vRECT(40, 40, 130, 150)); // to a quarter and to three quarters of a pixel
    close_page(picture, 400, 400);
    for (const auto order : {pixel_order::bgra, pixel_order::rgba}) {
        const auto image = drawn(picture, {.width = 10, .samples = 4, .ground = {}, .order = order});
        const auto expect = [&](int x, int y, double covered) {
            const auto part = [&](int full) { return static_cast<int>(std::lround(full * covered)); };
            bytes wanted{part(0), part(100), part(200), part(255)};
            if (order == pixel_order::rgba)
                std::swap(wanted[0], wanted[2]);
            EXPECT_EQ(pixel(image, x, y), wanted) << x << ' ' << y;
        };
        expect(0, 0, 0);
        expect(9, 9, 0);
        expect(1, 1, 1);
        expect(2, 2, 1);
        expect(3, 1, 4 / 16.0);
        expect(1, 3, 12 / 16.0);
        expect(3, 3, 3 / 16.0);
        expect(4, 1, 0);
    }
}

class AlphaOfEverything : public test::imaging_test { };

// What is composited on a ground is what is drawn on it: the figures, text and bitmaps of a whole picture.
TEST_F(AlphaOfEverything, CompositesToWhatIsDrawnOnAGround)
{
    document opened;
    ASSERT_TRUE(open_bytes(test::drawing_of_everything(), opened).ok());
    const auto clear = drawn(opened, {.width = 120, .ground = {}});
    for (const vCOLOUR& ground : {vCOLOUR(255, 255, 255), vCOLOUR(0, 0, 0)}) {
        const auto expected = drawn(opened, {.width = 120, .ground = ground});
        int off = 0;
        for (std::size_t i = 0; i < clear.bytes().size(); i += 4)
            for (std::size_t c = 0; c < 3; ++c) {
                const int alpha = clear.bytes()[i + 3], colour = clear.bytes()[i + c];
                ASSERT_LE(colour, alpha);
                const double over = colour + (255 - alpha) * int{ground.Red()} / 255.0;
                off += std::abs(over - expected.bytes()[i + c]) > 1.5;
            }
        EXPECT_EQ(off, 0) << int{ground.Red()};
    }
}

TEST(Alpha, OfASampleComesFromItsTwoDrawings)
{
    const struct {
        const char* what;
        std::array<std::uint8_t, 3> black, white, colour;
        int alpha;
    } cases[] = {
        {"nothing", {0, 0, 0}, {255, 255, 255}, {0, 0, 0}, 0},
        {"opaque", {10, 200, 30}, {10, 200, 30}, {10, 200, 30}, 255},
        {"opaque black", {0, 0, 0}, {0, 0, 0}, {0, 0, 0}, 255},
        {"opaque white", {255, 255, 255}, {255, 255, 255}, {255, 255, 255}, 255},
        {"a blend by half", {100, 50, 0}, {227, 177, 127}, {100, 50, 0}, 128},
        {"a blend that rounded", {3, 3, 3}, {253, 254, 253}, {3, 3, 3}, 4},
        {"the ground inverted", {255, 255, 255}, {0, 0, 0}, {0, 0, 0}, 255},
        {"the ground through a red mask", {0, 0, 0}, {0, 0, 255}, {0, 0, 255}, 255},
        {"the ground and a colour by exclusive or", {0, 0, 255}, {255, 255, 0}, {255, 255, 0}, 255},
    };
    for (const auto& c : cases) {
        std::array<std::uint8_t, 4> black{c.black[0], c.black[1], c.black[2], 77};
        const std::array<std::uint8_t, 4> white{c.white[0], c.white[1], c.white[2], 99};
        solve_alpha({black.data(), 4, 1, 1, 4}, {white.data(), 4, 1, 1, 4});
        EXPECT_TRUE(std::equal(c.colour.begin(), c.colour.end(), black.begin())) << c.what;
        EXPECT_EQ(black[3], c.alpha) << c.what;
    }
}

} // namespace
} // namespace klv
