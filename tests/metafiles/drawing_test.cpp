#include "klv/base/memory.h"
#include "klv/bitmaps/dib_context.h"
#include "klv/bitmaps/memory_dib.h"
#include "klv/bitmaps/metafile_context.h"
#include "klv/devices/memory_device.h"
#include "klv/geometry/primitive_shapes.h"
#include "klv/metafiles/detail/text_bitmap.h"
#include "klv/metafiles/metafile.h"

#include "tests/metafiles/picture_bytes.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace klv {
namespace {

constexpr int width = 120;
constexpr int height = 80;
const vRECT whole(0, 0, width, height);

vFILLSPEC solid(const vCOLOUR& colour)
{
    return {vFILL_SOLID, colour, colour, vANGLE(), vFILL_ALTERNATE, vPOINT()};
}

vLINESPEC pen(int line_width)
{
    return {vLINE_SOLID, vCOLOUR(0, 0, 255), line_width, vCORNER_ROUND, vDASH_ROUND, nullptr, -1, -1};
}

void draw_everything(vMETAFILE& picture)
{
    picture.FillSpec(solid(vCOLOUR(255, 0, 0)));
    picture.LineSpec(pen(3));
    picture.DrawEllipse(vRECT(100, 100, 500, 400));
    picture.FillSpec(vFILLSPEC(
        vFILL_LINEAR, vCOLOUR(0, 255, 0), vCOLOUR(0, 0, 0), vANGLE(45.0), vFILL_ALTERNATE, vPOINT()));
    picture.DrawRoundRect(vRECT(600, 100, 1100, 500), vSIZE(100, 100));
    picture.DrawArc(vRECT(50, 400, 550, 780), vPOINT(550, 590), vPOINT(300, 400));
    picture.DrawLine(3, vPOINT(0, 0), vPOINT(1200, 800), vPOINT(1200, 0));
    oMEMDIB dib(2, 2, 24, oMODEL_RGB24, 0);
    const vRECT place(700, 550, 900, 750);
    oDIBCONTEXT context(2, 2, &place, nullptr, nullptr, vIMAGECOLOUR(), vTILEINFO());
    picture.DrawDIB(dib, context, nullptr, 0);
    picture.FontSpec(vFONTSPEC("Arial", vFONT_NORMAL, 1000, vREAL(1.0), 0, vFONT_CHARACTER_HEIGHT, vANGLE()));
    picture.DrawTextOnLine("Text", vPOINT(100, 700), nullptr);
    picture.LogicalExtents(0, 1200, 0, 800);
    picture.EndMetaFile();
}

std::vector<std::uint8_t> pixels_of(vMETAFILE& picture)
{
    vMEMDEVICE device(width, height);
    device.DrawMetafile(picture, whole);
    const BITMAPINFO* dib = device.GetDIB();
    if (!dib)
        return {};
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(dib);
    const std::size_t size
        = sizeof(BITMAPINFOHEADER) + dib->bmiHeader.biClrUsed * sizeof(RGBQUAD) + dib->bmiHeader.biSizeImage;
    return {bytes + size - dib->bmiHeader.biSizeImage, bytes + size};
}

std::ptrdiff_t inked(const std::vector<std::uint8_t>& pixels)
{
    constexpr std::uint8_t white = 235;
    return std::ssize(pixels) - std::count(pixels.begin(), pixels.end(), white);
}

TEST(Drawing, ARereadPictureHasTheSamePixels)
{
    vMETAFILE picture;
    draw_everything(picture);
    const auto pixels = pixels_of(picture);
    EXPECT_GT(inked(pixels), 2000);

    vMEMSTREAM file;
    picture >> file;
    vMETAFILE reread(file);
    EXPECT_EQ(pixels_of(reread), pixels);

    vMEMSTREAM compressed;
    compressed.Compress(1);
    vMETAFILE small(compressed);
    draw_everything(small);
    EXPECT_EQ(pixels_of(small), pixels);
}

TEST(Drawing, TextOnALineIsDrawnEitherWay)
{
    vMETAFILE picture;
    picture.FillSpec(solid(vCOLOUR(0, 0, 0)));
    picture.FontSpec(vFONTSPEC("Arial", vFONT_BOLD, 3000, vREAL(1.0), 0, vFONT_CHARACTER_HEIGHT, vANGLE()));
    picture.DrawTextOnLine("HH", vPOINT(100, 600), nullptr);
    picture.LogicalExtents(0, 1200, 0, 800);
    picture.EndMetaFile();

    const auto bitmap = pixels_of(picture);
    picture.TextReplay(vTEXTREPLAY::as_text);
    const auto text = pixels_of(picture);
    EXPECT_GT(inked(bitmap), 50);
    ASSERT_GT(inked(text), 50);

    // Rows run upwards: the letters stand on the baseline, 60 pixels from the top.
    const auto first_ink = std::find_if(text.begin(), text.end(), [](std::uint8_t p) { return p != 235; });
    const auto row_from_top = height - 1 - (first_ink - text.begin()) / width;
    EXPECT_NEAR(static_cast<double>(row_from_top), 59, 1);
}

TEST(Drawing, TextAtTheLimitsOfCoordinatesIsHarmless)
{
    for (const vTEXTREPLAY how : {vTEXTREPLAY::as_text, vTEXTREPLAY::as_bitmap}) {
        for (const vPOINT& at : {vPOINT(INT32_MIN, INT32_MIN), vPOINT(INT32_MAX, INT32_MAX)}) {
            vMETAFILE picture;
            picture.TextReplay(how);
            picture.DrawTextOnLine("far", at, nullptr);
            picture.LogicalExtents(0, 1, 0, 1);
            EXPECT_EQ(inked(pixels_of(picture)), 0) << static_cast<int>(how) << " " << at.x;
        }
    }
}

TEST(Drawing, TextTooLargeForABitmapCostsNothing)
{
    vMEMDEVICE device(width, height);
    device.FontSpec(vFONTSPEC("Arial", vFONT_NORMAL, 100, vREAL(1.0), 0, vFONT_CHARACTER_HEIGHT, vANGLE()));
    const auto small = text_as_bitmap(device, "mmmm");
    ASSERT_NE(small, nullptr);
    EXPECT_GT(small->Height(), 100u);
    device.FontSpec(
        vFONTSPEC("Arial", vFONT_NORMAL, 4000000, vREAL(1.0), 0, vFONT_CHARACTER_HEIGHT, vANGLE()));
    EXPECT_EQ(text_as_bitmap(device, "mmmm"), nullptr);
}

TEST(Drawing, TilesRepeatThePicture)
{
    vMETAFILE picture;
    picture.FillSpec(solid(vCOLOUR(0, 0, 0)));
    picture.LineSpec(vLINESPEC(vLINE_NONE, vCOLOUR(), 0, vCORNER_ROUND, vDASH_ROUND, nullptr, -1, -1));
    picture.DrawRect(vRECT(0, 0, 50, 50));
    picture.LogicalExtents(0, 100, 0, 100);
    picture.EndMetaFile();
    vMEMDEVICE device(width, height);
    oMFCONTEXT context(100, 100, &whole, nullptr, nullptr, vIMAGECOLOUR(), vTILEINFO(vTILE_TILED, 2, 1));
    picture.Draw(device, context, nullptr);
    const auto* dib = reinterpret_cast<const std::uint8_t*>(device.GetDIB());
    ASSERT_NE(dib, nullptr);
    const auto* top = dib + sizeof(BITMAPINFOHEADER) + 256 * sizeof(RGBQUAD) + width * (height - 2);
    const int dark[] = {top[5], top[width / 2 + 5]};
    const int light[] = {top[width / 2 - 5], top[width - 5]};
    EXPECT_EQ(dark[0], dark[1]);
    EXPECT_EQ(light[0], light[1]);
    EXPECT_NE(dark[0], light[0]);
}

TEST(Drawing, SteadyPlaybackAllocatesLittle)
{
    const auto allocations_for = [](int shapes) {
        vMETAFILE picture;
        picture.FillSpec(solid(vCOLOUR(255, 0, 0)));
        for (int i = 0; i < shapes; ++i)
            picture.DrawShape(vRECTSHAPE(vRECT(0, 0, 100, 100)));
        picture.EndMetaFile();
        vMEMDEVICE device(width, height);
        device.DrawMetafile(picture, whole);
        const std::uint64_t before = vMemAllocations();
        device.DrawMetafile(picture, whole);
        return vMemAllocations() - before;
    };
    EXPECT_EQ(allocations_for(1000), allocations_for(100));
}

// Lets every allocation fail in turn, alone and with all that follow, over recording, copying, reading back
// and drawing. Nothing may crash, and once memory is back a picture is drawn as ever.
TEST(Drawing, SurvivesAllocationFailure)
{
    vMETAFILE reference;
    draw_everything(reference);
    const auto expected = pixels_of(reference);
    for (const memory_failure kind : {memory_failure::once, memory_failure::from_then_on}) {
        const std::uint64_t start = vMemAllocations();
        std::uint64_t needed = 1;
        for (std::uint64_t n = 0; n < needed; n += kind == memory_failure::once ? 1 : 3) {
            const std::uint64_t before = vMemAllocations();
            vMemFailAfter(n, kind);
            {
                vMETAFILE picture;
                draw_everything(picture);
                vMEMSTREAM file;
                picture >> file;
                file.MoveFromStart(0);
                vMETAFILE copy;
                copy << file;
                pixels_of(copy);
            }
            vMemNeverFail();
            needed = std::max(needed, std::min<std::uint64_t>(vMemAllocations() - before, 2000));
        }
        EXPECT_GT(vMemAllocations(), start);
    }
    EXPECT_EQ(pixels_of(reference), expected);
}

} // namespace
} // namespace klv
