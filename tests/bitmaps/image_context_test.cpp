#include "klv/bitmaps/dib_context.h"
#include "klv/bitmaps/image_context.h"
#include "klv/bitmaps/metafile_context.h"
#include "klv/devices/device.h"
#include "klv/geometry/matrix.h"

#include <memory>

#include <gtest/gtest.h>

namespace klv {
namespace {

const vRECT place(0, 0, 100, 50);

vPOINT drawn_at(const oIMGCONTEXT& context, const vPOINT& point)
{
    return point.Distort(context.GetDistort());
}

TEST(ImageContext, FlipsAndTurnsAboutItsDestination)
{
    const oMFCONTEXT flipped(10, 10, &place, nullptr, nullptr, 0.0, 1, 0, 0);
    EXPECT_EQ(drawn_at(flipped, {10, 7}), vPOINT(90, 7));
    const oMFCONTEXT upside_down(10, 10, &place, nullptr, nullptr, 0.0, 0, 1, 0);
    EXPECT_EQ(drawn_at(upside_down, {10, 7}), vPOINT(10, 43));

    const oMFCONTEXT turned(10, 10, &place, nullptr, nullptr, -270.0, 0, 0, 0);
    EXPECT_DOUBLE_EQ(turned.GetRotAngle(), 90.0);
    EXPECT_EQ(turned.GetBoundingRect().Width(), 50);
    EXPECT_EQ(turned.GetBoundingRect().Height(), 100);
    // The flip comes first: the left edge is mirrored to the right, and then turned down.
    const oMFCONTEXT both(10, 10, &place, nullptr, nullptr, 90.0, 1, 0, 0);
    EXPECT_EQ(drawn_at(both, {0, 25}), vPOINT(50, 75));
}

TEST(ImageContext, TakesTheWholeImageUnlessTold)
{
    const vRECT source(0, 0, 20, 40);
    const oDIBCONTEXT whole(40, 40, &place, nullptr, nullptr, vIMAGECOLOUR(), vTILEINFO());
    EXPECT_EQ(whole.GetSrcRect(), vRECT(0, 0, 40, 40));
    EXPECT_EQ(whole.GetBmpWidth(), 100);
    const oDIBCONTEXT part(40, 40, &place, &source, nullptr, vIMAGECOLOUR(), vTILEINFO());
    EXPECT_EQ(part.GetBmpWidth(), 200);
    EXPECT_EQ(part.GetBmpHeight(), 50);
}

TEST(ImageContext, ReadsItsImageColour)
{
    const vCOLOUR red(255, 0, 0);
    const vCOLOUR blue(0, 0, 255);
    const oDIBCONTEXT context(1, 1, &place, nullptr, &red, &blue, &blue, nullptr, 1, 17);
    EXPECT_TRUE(context.GetColOveride());
    EXPECT_TRUE(context.GetBkOveride());
    EXPECT_EQ(context.GetFgColour(), red);
    EXPECT_EQ(context.GetBkColour(), blue);
    EXPECT_EQ(context.GetTransparency(), vTRANSPARENCY_COLOUR);
    EXPECT_EQ(context.GetTransColour(), blue);
    EXPECT_EQ(context.GetTransThreshold(), 17);
    const oDIBCONTEXT plain(1, 1, &place, nullptr, nullptr, nullptr, nullptr, 0.0, 0, 0, 0, 5);
    EXPECT_FALSE(plain.GetColOveride() || plain.GetBkOveride() || plain.GetTransparency());
    const oMFCONTEXT picture(1, 1, &place, nullptr, &red, 0.0, 0, 0, 1);
    EXPECT_TRUE(picture.GetColOveride() && picture.GetBitmapsTransparent());
}

TEST(ImageContext, ComparesWhatTheRenderingDependsOn)
{
    const vRECT elsewhere(500, 500, 700, 600);
    const oMFCONTEXT here(10, 10, &place, nullptr, nullptr, 0.0, 1, 0, 0);
    const oMFCONTEXT there(10, 10, &elsewhere, nullptr, nullptr, 0.0, 1, 0, 0);
    EXPECT_FALSE(here == there);
    EXPECT_TRUE(here.CompareRenderInfo(there, 0));
    const oMFCONTEXT unflipped(10, 10, &place, nullptr, nullptr, 0.0, 0, 0, 0);
    EXPECT_FALSE(here.CompareRenderInfo(unflipped, 0));
    const std::unique_ptr<oMFCONTEXT> copy(here.Duplicate());
    EXPECT_TRUE(here == *copy);

    vTILEINFO fixed(vTILE_TILED, 2, 2);
    fixed.SetTileDrawMode(vTILE_FIXED_SIZE);
    fixed.SetTileSize(vSIZE(10, 10));
    vTILEINFO wider = fixed;
    wider.SetTileSize(vSIZE(20, 10));
    const oDIBCONTEXT a(10, 10, &place, nullptr, nullptr, vIMAGECOLOUR(), fixed);
    const oDIBCONTEXT b(10, 10, &place, nullptr, nullptr, vIMAGECOLOUR(), wider);
    EXPECT_TRUE(a.QyFixedTile());
    EXPECT_FALSE(a.CompareRenderInfo(b, 0));
}

TEST(ImageContext, KeepsItsDistortionAndMovesIt)
{
    oMATRIX* const matrix = oMATRIX::CreateMatrix();
    ASSERT_TRUE(matrix);
    {
        const oDIBCONTEXT context(1, 1, &place, nullptr, matrix, vIMAGECOLOUR(), vTILEINFO());
        const std::unique_ptr<oDIBCONTEXT> copy(context.Duplicate());
        EXPECT_EQ(copy->GetDistort(), matrix);
        EXPECT_EQ(matrix->AddRef(), 4U);
        matrix->Release();
    }
    EXPECT_EQ(matrix->Release(), 0U);

    oMFCONTEXT flipped(10, 10, &place, nullptr, nullptr, 0.0, 1, 0, 0);
    flipped.MoveTo(vPOINT(1000, 0));
    EXPECT_EQ(flipped.GetDstRect(), vRECT(1000, 0, 1100, 50));
    EXPECT_EQ(drawn_at(flipped, {1010, 7}), vPOINT(1090, 7));
}

TEST(TilePlacement, CountsTilesOrTakesTheirSize)
{
    oDIBCONTEXT context(10, 10, &place, nullptr, nullptr, vIMAGECOLOUR(), vTILEINFO());
    vDEVICE device;
    vRECT image;
    vRECT area;
    vRECT tile;
    vTILEINFO counted(vTILE_TILED, 4, 2);
    counted.CalculateImageRect(device, context, &image, &area, &tile);
    EXPECT_EQ(tile, vRECT(0, 0, 25, 25));
    EXPECT_EQ(image, place);
    EXPECT_EQ(area, place);

    vTILEINFO sized(vTILE_TILED, 1, 1);
    sized.SetTileDrawMode(vTILE_FIXED_SIZE_AND_ONE);
    sized.SetTileSize(vSIZE(30, 20));
    sized.SetTileOrigin(vPOINT(10, 0));
    sized.CalculateImageRect(device, context, &image, nullptr, &tile);
    EXPECT_EQ(tile, vRECT(-20, 0, 10, 20));
    EXPECT_EQ(image, vRECT(-20, 0, 130, 80));
}

} // namespace
} // namespace klv
