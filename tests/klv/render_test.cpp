#include "klv/metafiles/metafile.h"

#include "tools/klv/render.h"

#include <set>
#include <utility>

#include <gtest/gtest.h>

namespace klv::tool {
namespace {

void make_page(vMETAFILE& picture, int width_um, int height_um)
{
    const vCOLOUR red(255, 0, 0);
    picture.PhysicalExtents(width_um, height_um);
    picture.LineSpec(vLINESPEC(vLINE_NONE, red, 0, vCORNER_ROUND, vDASH_ROUND, nullptr, -1, -1));
    picture.FillSpec(vFILLSPEC(vFILL_SOLID, red, red, vANGLE(), vFILL_ALTERNATE, vPOINT()));
    picture.DrawRect(vRECT(0, 0, 500, 250)); // the upper left quarter
    picture.LogicalExtents(0, 1000, 0, 500);
    picture.EndMetaFile();
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
        {2540, 1270, {}, {16, 8}}, // at least 16 pixels on the longer side
        {25400000, 2540000, {}, {4096, 410}}, // at most 4096
        {1000000, 1, {.width = 10}, {10, 1}},
    };
    for (const auto& c : cases) {
        vMETAFILE picture;
        make_page(picture, c.width_um, c.height_um);
        EXPECT_EQ(output_size(picture, c.options), c.size) << c.width_um << " x " << c.height_um;
    }
}

std::array<int, 3> pixel(const oMEMDIB& bitmap, int x, int y)
{
    const auto line = bitmap.line(bitmap.Height() - 1 - y).subspan(3 * static_cast<std::size_t>(x));
    return {line[2], line[1], line[0]};
}

TEST(Render, FillsItsPartOfThePageOnTheBackground)
{
    using rgb = std::array<int, 3>;
    for (const int antialias : {1, 4}) {
        vMETAFILE picture;
        make_page(picture, 254000, 127000);
        const auto bitmap
            = render(picture, {.width = 100, .antialias = antialias, .background = vCOLOUR(0, 0, 255)});
        ASSERT_EQ(bitmap->Width(), 100);
        ASSERT_EQ(bitmap->Height(), 50);
        EXPECT_EQ(pixel(*bitmap, 0, 0), (rgb{255, 0, 0}));
        EXPECT_EQ(pixel(*bitmap, 48, 23), (rgb{255, 0, 0}));
        EXPECT_EQ(pixel(*bitmap, 52, 10), (rgb{0, 0, 255}));
        EXPECT_EQ(pixel(*bitmap, 10, 27), (rgb{0, 0, 255}));
        EXPECT_EQ(pixel(*bitmap, 99, 49), (rgb{0, 0, 255}));
    }
}

// Samples have places of their own, and the thinnest line is as wide as a pixel wherever it lies.
TEST(Render, SamplesShowWhatLiesBetweenPixels)
{
    for (const vCOLOUR& ink : {vCOLOUR(0, 0, 0), vCOLOUR(200, 0, 0)}) {
        for (const int x : {400, 403, 405, 407}) { // in tenths of a pixel
            vMETAFILE picture;
            picture.PhysicalExtents(100000, 100000);
            picture.FillSpec(vFILLSPEC(vFILL_SOLID, ink, ink, vANGLE(), vFILL_ALTERNATE, vPOINT()));
            picture.LineSpec(vLINESPEC(vLINE_NONE, ink, 0, vCORNER_ROUND, vDASH_ROUND, nullptr, -1, -1));
            picture.DrawRect(vRECT(0, 0, x, 500));
            picture.LineSpec(vLINESPEC(vLINE_SOLID, ink, 0, vCORNER_ROUND, vDASH_ROUND, nullptr, -1, -1));
            picture.DrawLine(vPOINT(x, 600), vPOINT(x, 1000));
            picture.LogicalExtents(0, 1000, 0, 1000);
            picture.EndMetaFile();
            const auto bitmap = render(picture, {.width = 100});
            const auto covered = [&](int y) {
                double sum = 0;
                for (int column = 0; column < bitmap->Width(); ++column)
                    sum += (255 - pixel(*bitmap, column, y)[1]) / 255.0;
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
    const vCOLOUR grey(128, 128, 128);
    picture.PhysicalExtents(100000, 200000);
    picture.LineSpec(vLINESPEC(vLINE_NONE, grey, 0, vCORNER_ROUND, vDASH_ROUND, nullptr, -1, -1));
    picture.FillSpec(vFILLSPEC(vFILL_SOLID, grey, grey, vANGLE(), vFILL_ALTERNATE, vPOINT()));
    picture.DrawRect(vRECT(0, 0, 1000, 2000));
    picture.LogicalExtents(0, 1000, 0, 2000);
    picture.EndMetaFile();
    const auto bitmap = render(picture, {.width = 600});
    for (int y = 0; y < bitmap->Height(); ++y)
        ASSERT_EQ(pixel(*bitmap, 300, y), (std::array<int, 3>{128, 128, 128})) << y;
}

// Three hundred times over a large page, then an ellipse: the whole would take seconds at four samples an
// axis.
TEST(Render, CostlyPicturesGetFewerSamples)
{
    const auto shades_of_edge = [](int layers) {
        vMETAFILE picture;
        const vCOLOUR white(255, 255, 255), black(0, 0, 0);
        picture.PhysicalExtents(100000, 100000);
        picture.LineSpec(vLINESPEC(vLINE_NONE, white, 0, vCORNER_ROUND, vDASH_ROUND, nullptr, -1, -1));
        picture.FillSpec(vFILLSPEC(vFILL_SOLID, white, white, vANGLE(), vFILL_ALTERNATE, vPOINT()));
        for (int i = 0; i < layers; ++i)
            picture.DrawRect(vRECT(0, 0, 1000, 1000));
        picture.FillSpec(vFILLSPEC(vFILL_SOLID, black, black, vANGLE(), vFILL_ALTERNATE, vPOINT()));
        picture.DrawEllipse(vRECT(0, 0, 1000, 1000));
        picture.LogicalExtents(0, 1000, 0, 1000);
        picture.EndMetaFile();
        const auto bitmap = render(picture, {.width = 1600});
        std::set<int> shades;
        for (int y = 0; y < bitmap->Height(); ++y)
            shades.insert(pixel(*bitmap, 200, y)[0]);
        return shades.size();
    };
    EXPECT_GT(shades_of_edge(1), 2U);
    EXPECT_EQ(shades_of_edge(300), 2U);
}

} // namespace
} // namespace klv::tool
