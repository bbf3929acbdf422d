#include "klv/bitmaps/memory_dib.h"
#include "klv/core/progress.h"

#include "tests/rendering/drawing.h"

#include <algorithm>
#include <optional>
#include <set>
#include <span>
#include <utility>
#include <vector>

namespace klv {
namespace {

using test::close_page;
using test::drawn;
using test::pixel;
using test::use_solid;
using bytes = std::vector<int>;

// Red in the upper left quarter.
void make_page(vMETAFILE& picture)
{
    use_solid(picture, vCOLOUR(255, 0, 0));
    picture.DrawRect(vRECT(0, 0, 500, 250));
    close_page(picture, 1000, 500);
}

TEST(Render, SizesByThePhysicalPage)
{
    const struct {
        int width_um, height_um;
        render_options options;
        vSIZE size;
    } cases[] = {
        {254000, 127000, {}, {960, 480}},
        {254000, 127000, {.dpi = 48}, {480, 240}},
        {254000, 127000, {.width = 100}, {100, 50}},
        {254000, 127000, {.height = 100}, {200, 100}},
        {254000, 127000, {.width = 7, .height = 300}, {7, 300}},
        {254000, 127000, {.width = 100, .height = 90, .fit = true}, {100, 50}},
        {254000, 127000, {.width = 190, .height = 90, .fit = true}, {180, 90}},
        {254000, 127000, {.height = 90, .fit = true}, {180, 90}},
        {2540, 1270, {}, {16, 8}}, // at least 16 pixels on the longer side
        {25400000, 2540000, {}, {4096, 410}}, // at most 4096
        {1000000, 1, {.width = 10}, {10, 1}},
    };
    for (const auto& c : cases) {
        vMETAFILE picture;
        make_page(picture);
        picture.PhysicalExtents(c.width_um, c.height_um);
        EXPECT_EQ(rendered_size(picture, c.options), c.size) << c.width_um << " x " << c.height_um;
    }
}

TEST(Render, FillsItsPartOfThePageOnTheGround)
{
    vMETAFILE picture;
    make_page(picture);
    for (const int samples : {1, 4}) {
        const auto image = drawn(picture, {.width = 100, .samples = samples, .ground = vCOLOUR(0, 0, 255)});
        ASSERT_EQ(image.width(), 100);
        ASSERT_EQ(image.height(), 50);
        for (const auto& [x, y] : {std::pair(0, 0), {48, 23}})
            EXPECT_EQ(pixel(image, x, y), (bytes{0, 0, 255, 255}));
        for (const auto& [x, y] : {std::pair(52, 10), {10, 27}, {99, 49}})
            EXPECT_EQ(pixel(image, x, y), (bytes{255, 0, 0, 255}));
    }
}

TEST(Render, PutsPixelsInTheWantedOrderAndPlace)
{
    vMETAFILE picture;
    use_solid(picture, vCOLOUR(200, 100, 50));
    picture.DrawRect(vRECT(0, 0, 1000, 250));
    close_page(picture, 1000, 500);
    oMEMDIB bitmap;
    ASSERT_TRUE(render_bitmap(picture, {.width = 20}, bitmap).ok());
    const struct {
        pixel_order order;
        bytes colour;
    } cases[] = {
        {pixel_order::bgra, {50, 100, 200, 255}},
        {pixel_order::rgba, {200, 100, 50, 255}},
        {pixel_order::bgr, {50, 100, 200}},
        {pixel_order::rgb, {200, 100, 50}},
    };
    for (const auto& c : cases)
        for (const drawable& what : {drawable(picture), drawable(bitmap)}) {
            const auto image = drawn(what, {.width = 20, .order = c.order});
            EXPECT_EQ(pixel(image, 0, 0), c.colour);
            EXPECT_EQ(pixel(image, 19, 4), c.colour);
            EXPECT_EQ(pixel(image, 19, 5), bytes(c.colour.size(), 255));

            // Rows from the bottom, with gaps that nothing touches.
            constexpr int stride = 100, guard = 7;
            std::vector<std::uint8_t> memory(10 * stride, guard);
            const pixel_view upwards{memory.data() + 9 * stride, -stride, 20, 10, c.order};
            ASSERT_TRUE(render(what, {}, upwards).ok());
            for (int y = 0; y < 10; ++y) {
                EXPECT_TRUE(std::ranges::equal(image.row(y), std::span(upwards.row(y), image.stride()))) << y;
                EXPECT_EQ(std::count(upwards.row(y) + image.stride(), upwards.row(y) + stride, guard),
                    stride - static_cast<int>(image.stride()));
            }
        }
}

// Samples have places of their own, and the thinnest line is as wide as a pixel wherever it lies.
TEST(Render, SamplesShowWhatLiesBetweenPixels)
{
    for (const vCOLOUR& ink : {vCOLOUR(0, 0, 0), vCOLOUR(200, 0, 0)}) {
        for (const int x : {400, 403, 405, 407}) { // in tenths of a pixel
            vMETAFILE picture;
            use_solid(picture, ink);
            picture.DrawRect(vRECT(0, 0, x, 500));
            picture.LineSpec(vLINESPEC(vLINE_SOLID, ink, 0, vCORNER_ROUND, vDASH_ROUND, nullptr, -1, -1));
            picture.DrawLine(vPOINT(x, 600), vPOINT(x, 1000));
            close_page(picture, 1000, 1000);
            const auto image = drawn(picture, {.width = 100});
            const auto covered = [&](int y) {
                double sum = 0;
                for (int column = 0; column < image.width(); ++column)
                    sum += (255 - pixel(image, column, y)[1]) / 255.0;
                return sum;
            };
            EXPECT_NEAR(covered(20), x / 10.0, 0.25) << x;
            EXPECT_NEAR(covered(80), 1, 0.01) << x;
        }
    }
}

// A large page is drawn in bands; nothing may show where they meet.
TEST(Render, BandsMeetWithoutASeam)
{
    vMETAFILE picture;
    use_solid(picture, vCOLOUR(128, 128, 128));
    picture.DrawRect(vRECT(0, 0, 1000, 2000));
    close_page(picture, 1000, 2000);
    for (const auto& ground : {std::optional(vCOLOUR(255, 255, 255)), std::optional<vCOLOUR>()}) {
        const auto image = drawn(picture, {.width = 600, .ground = ground});
        for (int y = 0; y < image.height(); ++y)
            ASSERT_EQ(pixel(image, 300, y), (bytes{128, 128, 128, 255})) << y;
    }
}

// Three hundred times over a large page, then an ellipse: the whole would take seconds at four samples an
// axis.
TEST(Render, CostlyPicturesGetFewerSamples)
{
    const auto shades_of_edge = [](int layers) {
        vMETAFILE picture;
        use_solid(picture, vCOLOUR(255, 255, 255));
        for (int i = 0; i < layers; ++i)
            picture.DrawRect(vRECT(0, 0, 1000, 1000));
        use_solid(picture, vCOLOUR(0, 0, 0));
        picture.DrawEllipse(vRECT(0, 0, 1000, 1000));
        close_page(picture, 1000, 1000);
        const auto image = drawn(picture, {.width = 1600});
        std::set<int> shades;
        for (int y = 0; y < image.height(); ++y)
            shades.insert(pixel(image, 200, y)[0]);
        return shades.size();
    };
    EXPECT_GT(shades_of_edge(1), 2U);
    EXPECT_EQ(shades_of_edge(300), 2U);
}

TEST(Render, ScalesBitmapsAndKeepsTheirOwnPixelsByDefault)
{
    oMEMDIB bitmap(4, 2, 24, oMODEL_RGB24, 0);
    for (int y = 0; y < 2; ++y)
        std::ranges::fill(bitmap.line(y).first(6), std::uint8_t{90}); // the left half
    const auto same = drawn(bitmap, {});
    ASSERT_EQ(same.width(), 4);
    EXPECT_EQ(pixel(same, 1, 1), (bytes{90, 90, 90, 255}));
    EXPECT_EQ(pixel(same, 2, 0), (bytes{0, 0, 0, 255}));
    const auto half = drawn(bitmap, {.width = 2});
    ASSERT_EQ(half.height(), 1);
    EXPECT_EQ(pixel(half, 0, 0), (bytes{90, 90, 90, 255}));
}

TEST(Render, RefusesOptionsOutOfTheirRange)
{
    vMETAFILE picture;
    make_page(picture);
    rendered_image image;
    ASSERT_TRUE(image.resize(1, 1, pixel_order::rgb));
    for (const render_options& options :
        {render_options{.width = -1}, {.height = 32768}, {.dpi = -5}, {.samples = 17}, {.samples = -1}})
        EXPECT_EQ(render(picture, options, image).code(), render_code::bad_options);
    EXPECT_EQ(render(picture, {}, pixel_view{nullptr, 4, 1, 1}).code(), render_code::bad_options);
    EXPECT_EQ(image.width(), 1); // as it was
}

// What an indicator hears of a drawing, however often the picture is played for it.
class indicator : public oPROGRESS {
public:
    explicit indicator(int patience)
        : patience_(patience)
    {
    }
    void oStart() override { ++starts; }
    void oSet(std::uint32_t value) override
    {
        falls += value < last;
        last = value;
    }
    void oTerminate() override { ++ends; }
    int Stop() override { return --patience_ < 0; }

    int starts = 0, ends = 0, falls = 0;
    std::uint32_t last = 0;

private:
    int patience_;
};

TEST(Render, TellsItsProgressAsAWholeAndStopsWhenAsked)
{
    vMETAFILE picture;
    use_solid(picture, vCOLOUR(1, 2, 3));
    for (int i = 0; i < 50; ++i)
        picture.DrawRect(vRECT(0, 0, 1000, 10 * i));
    close_page(picture, 1000, 1000);
    render_options options{.width = 700, .ground = {}}; // several bands, each drawn twice
    rendered_image image;

    indicator patient(1'000'000);
    options.progress = &patient;
    ASSERT_TRUE(render(picture, options, image).ok());
    EXPECT_EQ(patient.starts, 1);
    EXPECT_EQ(patient.ends, 1);
    EXPECT_EQ(patient.falls, 0);
    EXPECT_EQ(patient.last, patient.FullScale());
    EXPECT_GT(patient.last, 0U);

    const auto before = pixel(image, 0, 0);
    for (const int patience : {0, 10, 75, 150}) {
        indicator stopping(patience);
        options.progress = &stopping;
        EXPECT_EQ(render(picture, options, image).code(), render_code::cancelled) << patience;
        EXPECT_EQ(stopping.ends, 1);
    }
    EXPECT_EQ(pixel(image, 0, 0), before);
    EXPECT_EQ(picture.RemoveProgressInd(), nullptr); // nothing stays behind
}

} // namespace
} // namespace klv
