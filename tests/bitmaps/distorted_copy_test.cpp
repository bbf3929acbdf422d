#include "klv/bitmaps/memory_dib.h"
#include "klv/bitmaps/tile_info.h"
#include "klv/core/rect.h"
#include "klv/geometry/distort.h"
#include "klv/geometry/matrix.h"

#include "tests/bitmaps/dib_text.h"

#include <gtest/gtest.h>

namespace klv {
namespace {

using test::dib_of;
using test::picture;
using test::text_of;

oMEMDIB turned(const oMEMDIB& source, int flip_h, int flip_v, double angle)
{
    const vRECT whole(0, 0, source.Width(), source.Height());
    return oMEMDIB(source, whole, whole, nullptr, flip_h, flip_v, angle, oMODEL_RGB24);
}

TEST(DistortedCopy, FlipsAndQuarterTurnsMovePixelsExactly)
{
    const oMEMDIB source = dib_of({"rg", "b."});
    const struct {
        const char* what;
        int flip_h, flip_v;
        double angle;
        picture expected;
    } cases[] = {
        {"as it is", 0, 0, 0, {"rg", "b."}},
        {"left and right", 1, 0, 0, {"gr", ".b"}},
        {"top and bottom", 0, 1, 0, {"b.", "rg"}},
        {"quarter turn", 0, 0, 90, {"br", ".g"}},
        {"half turn", 0, 0, 180, {".b", "gr"}},
        {"flip, then a quarter", 1, 0, 90, {".g", "br"}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(text_of(turned(source, c.flip_h, c.flip_v, c.angle)), c.expected) << c.what;
}

TEST(DistortedCopy, TakesAPartWithYFromTheTop)
{
    const oMEMDIB source = dib_of({"rg.", "b#."});
    const vRECT top_right(1, 0, 3, 1);
    const vRECT place(100, 50, 102, 51);
    EXPECT_EQ(text_of(oMEMDIB(source, top_right, place, nullptr, nullptr, oMODEL_RGB24, vTILEINFO(), 0)),
        (picture{"g."}));
    // Inverted edges flip.
    const vRECT flipped(2, 0, 0, 1);
    EXPECT_EQ(text_of(oMEMDIB(source, flipped, place, nullptr, nullptr, oMODEL_RGB24, vTILEINFO(), 0)),
        (picture{"gr"}));
    const vRECT outside(7, 7, 9, 9);
    EXPECT_FALSE(oMEMDIB(source, outside, place, nullptr, nullptr, oMODEL_RGB24, vTILEINFO(), 0).HasPixels());
}

TEST(DistortedCopy, ClipCutsAndTheLimitScales)
{
    const oMEMDIB source = dib_of({"rg", "b."});
    const vRECT whole(0, 0, 2, 2);
    const vRECT place(0, 0, 8, 8);
    const vRECT right_half(4, 0, 100, 100);
    const oMEMDIB clipped(
        oMEMDIB(source, 0, 0, 8, 0, 0), whole, place, &right_half, nullptr, oMODEL_PALETTE8, vTILEINFO(), 0);
    EXPECT_EQ(text_of(clipped), (picture{"gggg", "gggg", "gggg", "gggg", "....", "....", "....", "...."}));
    EXPECT_EQ(clipped.ColourDepth(), 8);
    const vRECT large(0, 0, 4000, 2000);
    const oMEMDIB limited(source, whole, large, nullptr, nullptr, oMODEL_RGB24, vTILEINFO(), 100);
    EXPECT_EQ(limited.Width(), 100);
    EXPECT_EQ(limited.Height(), 50);
    const vRECT nothing(9, 9, 10, 10);
    EXPECT_FALSE(oMEMDIB(source, whole, place, &nothing, nullptr, oMODEL_RGB24, vTILEINFO(), 0).HasPixels());
}

TEST(DistortedCopy, TilesRepeatTheSource)
{
    const oMEMDIB source = dib_of({"rg", "b."});
    const vRECT whole(0, 0, 2, 2);
    const vRECT place(0, 0, 6, 4);
    const oMEMDIB tiled(
        source, whole, place, nullptr, nullptr, oMODEL_RGB24, vTILEINFO(vTILE_TILED, 3, 2), 0);
    EXPECT_EQ(text_of(tiled), (picture{"rgrgrg", "b.b.b.", "rgrgrg", "b.b.b."}));
}

TEST(DistortedCopy, WhatIsNotCoveredIsWhite)
{
    // An eighth of a turn of a black square leaves white corners and no gaps inside.
    oMEMDIB source(40, 40, 24, oMODEL_RGB24, 0);
    const oMEMDIB result = turned(source, 0, 0, 45);
    EXPECT_NEAR(result.Width(), 57, 1);
    int black = 0;
    int other = 0;
    for (const auto& row : text_of(result)) {
        const auto first = row.find('#');
        const auto last = row.rfind('#');
        if (first == std::string::npos)
            continue;
        black += static_cast<int>(last - first + 1);
        for (const char c : row)
            other += c != '#' && c != '.';
        EXPECT_EQ(row.substr(first, last - first + 1), std::string(last - first + 1, '#'));
    }
    EXPECT_EQ(other, 0);
    EXPECT_NEAR(black, 1600, 60);
}

/// Bends: moves points down by a hundredth of the square of their x.
class bend final : public IDistort {
public:
    std::uint32_t AddRef() noexcept override { return 2; }
    std::uint32_t Release() noexcept override { return 1; }
    IDistort* Duplicate() const noexcept override { return nullptr; }
    int IsEqual(const IDistort&, int) const noexcept override { return 0; }
    int IsLinear() const noexcept override { return 0; }
    void Transform(vPOINT* points, std::int32_t count) const noexcept override
    {
        for (std::int32_t i = 0; i < count; ++i)
            points[i].y += points[i].x * points[i].x / 100;
    }
    double Coefficient(std::int32_t) const noexcept override { return 0; }
    vRECT MapBbox(std::int32_t l, std::int32_t t, std::int32_t r, std::int32_t b) const noexcept override
    {
        return vRECT(l, t, r, b + r * r / 100);
    }
    std::int32_t MapLength(std::int32_t length) const noexcept override { return length; }
    IDistort* MapOp2(const IDistort&) const noexcept override { return nullptr; }
    void MapNothing() noexcept override { }
    IDistort* MapOp3() const noexcept override { return nullptr; }
};

TEST(DistortedCopy, FollowsADistortionThatBends)
{
    const oMEMDIB source(100, 20, 24, oMODEL_RGB24, 0);
    const vRECT whole(0, 0, 100, 20);
    const bend distort;
    const oMEMDIB result(source, whole, whole, nullptr, &distort, oMODEL_RGB24, vTILEINFO(), 0);
    EXPECT_EQ(result.Width(), 100);
    EXPECT_EQ(result.Height(), 120);
    const auto rows = text_of(result);
    for (const int x : {5, 30, 60, 95}) {
        int first = 0;
        while (first < 120 && rows[static_cast<std::size_t>(first)][static_cast<std::size_t>(x)] == '.')
            ++first;
        EXPECT_NEAR(first, x * x / 100, 2) << x;
    }
}

TEST(DistortedCopy, PalettesKeepTheirIndicesAndFillWithTheirWhite)
{
    oMEMDIB source(4, 4, 4, oMODEL_PALETTE4, 0);
    const RGBQUAD colours[] = {{0, 0, 255, 0}, {250, 250, 250, 0}, {0, 0, 0, 0}};
    source.SetPalette(oDIBPALETTE(colours, 3));
    const vRECT whole(0, 0, 4, 4);
    const oMEMDIB result(source, whole, vRECT(0, 0, 40, 40), nullptr, 0, 0, 45.0, oMODEL_PALETTE4);
    EXPECT_EQ(result.ColourDepth(), 4);
    EXPECT_EQ(result.line(0)[0] >> 4, 1); // a corner
    EXPECT_EQ(result.line(result.Height() / 2)[static_cast<std::size_t>(result.Width() / 4)] >> 4, 0);
}

} // namespace
} // namespace klv
