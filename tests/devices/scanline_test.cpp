#include "klv/devices/fill/scanline_fill.h"
#include "klv/geometry/primitive_shapes.h"

#include "test_surface.h"

#include <gtest/gtest.h>

namespace klv::test {
namespace {

// Fills polygons row by row with black from a pattern.
std::string filled(std::initializer_list<std::vector<POINT>> polygons, bool winding)
{
    surface paper(12, 10);
    surface pattern(12, 8);
    PatBlt(pattern.dc(), 0, 0, 12, 8, BLACKNESS);
    LISTINFO list;
    for (const auto& polygon : polygons)
        for (std::size_t i = 0; i < polygon.size(); ++i)
            list.AppendLineSeg(polygon[i], polygon[(i + 1) % polygon.size()]);
    const RECT clip{0, 0, 10, 10};
    for (int y = 0; y < 10; ++y) {
        std::array<LINESECT, most_crossings> crossings{};
        const int count = CalcLineIntersects(list.LineSegs(), crossings, y);
        const std::span<const LINESECT> row(crossings.data(), static_cast<std::size_t>(count));
        if (winding)
            DrawWinding(paper.dc(), y, row, clip, pattern.dc());
        else
            DrawAlternate(paper.dc(), y, row, clip, pattern.dc());
    }
    return paper.art();
}

TEST(Scanlines, FillByBothRules)
{
    const std::vector<POINT> outer = {{1, 1}, {20, 1}, {20, 8}, {1, 8}};
    const std::vector<POINT> inner = {{4, 3}, {8, 3}, {8, 6}, {4, 6}};
    EXPECT_EQ(filled({outer, inner}, false), drawing(R"(
            ............
            .#########..
            .#########..
            .###....##..
            .###....##..
            .###....##..
            .#########..
            .#########..
            ............
            ............
        )"));
    EXPECT_EQ(filled({outer, inner}, true), drawing(R"(
            ............
            .#########..
            .#########..
            .#########..
            .#########..
            .#########..
            .#########..
            .#########..
            ............
            ............
        )"));
}

TEST(Scanlines, PatternFollowsTheGraduation)
{
    surface paper(64, 16);
    vDEVICE device(paper.dc());
    device.FillSpec(fill(vFILL_LINEAR, vCOLOUR(0, 0, 0), vCOLOUR(255, 255, 255)));
    FILLINFO info(paper.dc(), vRECTSHAPE(vRECT(0, 0, 63, 15)), device);
    info.Update(3);
    DrawSimple(paper.dc(), 3, -5, 99, info.Box(), info.PatternDC());
    EXPECT_LT(info.Level(0), 4);
    EXPECT_GT(info.Level(15), 59);
    for (int x = 1; x < 63; ++x)
        EXPECT_GE(paper.at(x, 3), paper.at(x - 1, 3)) << x;
    EXPECT_EQ(paper.at(63, 3), 0xFFFFFFU); // the box ends before it

    device.FillSpec(fill(vFILL_RADIAL, vCOLOUR(0, 0, 0), vCOLOUR(255, 255, 255)));
    FILLINFO radial(paper.dc(), vRECTSHAPE(vRECT(0, 0, 63, 15)), device);
    radial.SetPattern(7);
    EXPECT_LT(radial.Level(8), radial.Level(0));
    EXPECT_NEAR(radial.Level(0), radial.Level(15), 4);
}

} // namespace
} // namespace klv::test
