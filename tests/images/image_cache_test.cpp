#include "klv/bitmaps/dib_context.h"
#include "klv/bitmaps/metafile_context.h"
#include "klv/devices/display_bitmap.h"
#include "klv/geometry/primitive_shapes.h"
#include "klv/images/detail/image_cache_store.h"
#include "klv/images/image.h"
#include "klv/images/image_cache.h"
#include "klv/metafiles/metafile.h"
#include "klv/platform/host.h"

#include "tests/bitmaps/dib_text.h"

#include <memory>
#include <string>

#include <gtest/gtest.h>

namespace klv {
namespace {

using test::dib_of;
using test::picture;
using test::text_of;

class listening_host : public host {
public:
    listening_host() { install_host(this); }
    ~listening_host() override { install_host(nullptr); }
    void debug_output(const char* line) override { heard += line; }
    std::string heard;
};

std::unique_ptr<image_cache_item> item_of(std::uint64_t bytes)
{
    return std::make_unique<image_cache_item>(nullptr, nullptr, bytes);
}

constexpr std::uint64_t plenty = 1'000'000;

TEST(ImageCacheStore, HoldsFiftyItemsAndEvictsTheOldest)
{
    image_cache_store store;
    for (std::uint32_t i = 0; i < 50; ++i)
        ASSERT_TRUE(store.add(i / 5, item_of(1), plenty)); // ten groups of five
    EXPECT_EQ(store.item_count(), 50U);
    ASSERT_TRUE(store.add(99, item_of(1), plenty));
    EXPECT_EQ(store.item_count(), 50U);
    EXPECT_EQ(store.find(0)->items.size(), 4U);

    // Locked groups are passed over.
    store.find(0)->locked = true;
    ASSERT_TRUE(store.add(99, item_of(1), plenty));
    EXPECT_EQ(store.find(0)->items.size(), 4U);
    EXPECT_EQ(store.find(1)->items.size(), 4U);
}

TEST(ImageCacheStore, StaysWithinItsBudgetOfBytes)
{
    image_cache_store store;
    for (std::uint32_t i = 0; i < 10; ++i)
        ASSERT_TRUE(store.add(i, item_of(100), 1050));
    ASSERT_TRUE(store.add(10, item_of(250), 1050));
    EXPECT_EQ(store.total_bytes(), 1050U - 100);
    EXPECT_FALSE(store.find(2)); // three of the oldest went, with their groups
    EXPECT_TRUE(store.find(3));
    listening_host host;
    EXPECT_FALSE(store.add(11, item_of(2000), 1050));
    EXPECT_EQ(host.heard, "vIMAGECACHEINSTANCE::fMakeRoomInCache(...) failed!");
}

TEST(ImageCacheStore, FailsWhenEverythingIsLocked)
{
    image_cache_store store;
    for (std::uint32_t i = 0; i < 50; ++i) {
        image_cache_item* const item = store.add(i, item_of(1), plenty);
        ASSERT_TRUE(item);
        item->locked = true;
    }
    listening_host host;
    EXPECT_FALSE(store.add(50, item_of(1), plenty));
    EXPECT_EQ(store.item_count(), 50U);
    store.remove(7);
    EXPECT_NE(host.heard.find("destructing when locked!\n"), std::string::npos);
    EXPECT_TRUE(store.add(50, item_of(1), plenty));
    store.clear();
    EXPECT_EQ(store.total_bytes(), 0U);
}

vLINESPEC no_line()
{
    vLINESPEC spec;
    spec.LineType(vLINE_NONE);
    return spec;
}

/// A bitmap device of 24 bits and what is drawn on it, as text.
class canvas {
public:
    canvas(int width, int height)
        : device(width, height, 0, 24)
    {
    }
    picture text()
    {
        BITMAPINFO* const packed = device.CopyIntoDIB();
        const oMEMDIB dib(packed, 0);
        vMemFree(packed);
        return text_of(dib);
    }
    vDISPLAYBMP device;
};

TEST(ImageCache, DrawsBackPixelForPixelAndRendersOnce)
{
    const vIMAGECACHE handle;
    oMEMDIB bitmap = dib_of({"rg", "b#"});
    oDIBIMAGE image(bitmap);
    const vRECT place(1, 1, 5, 5);
    oDIBCONTEXT context(2, 2, &place, nullptr, nullptr, vIMAGECOLOUR(), vTILEINFO());
    const picture expected{"......", ".rrgg.", ".rrgg.", ".bb##.", ".bb##.", "......"};
    canvas first(6, 6);
    EXPECT_EQ(image.Draw(first.device, context), 1);
    EXPECT_EQ(first.text(), expected);

    // What is cached shows, even where it is drawn elsewhere, until it is cleared.
    bitmap = dib_of({"..", ".."});
    canvas second(6, 6);
    const vRECT moved(0, 0, 4, 4);
    oDIBCONTEXT elsewhere(2, 2, &moved, nullptr, nullptr, vIMAGECOLOUR(), vTILEINFO());
    image.Draw(second.device, elsewhere);
    EXPECT_EQ(second.text(), (picture{"rrgg..", "rrgg..", "bb##..", "bb##..", "......", "......"}));
    vIMAGECACHE::Clear(image.Id());
    canvas third(6, 6);
    image.Draw(third.device, context);
    EXPECT_EQ(third.text(), picture(6, "......"));
}

TEST(ImageCache, LimitsTheRenderingAndStretchesItBack)
{
    const vIMAGECACHE handle;
    canvas target(40, 40);
    const vRECT place(0, 0, 40, 40);
    const oDIBCONTEXT context(1, 1, &place, nullptr, nullptr, vIMAGECOLOUR(), vTILEINFO());
    vDEVICE* const surface = vIMAGECACHE::Draw(1234, target.device, context, 10);
    ASSERT_TRUE(surface);
    EXPECT_EQ(static_cast<vDISPLAYBMP*>(surface)->Size(), vRECT(0, 0, 10, 10));
    surface->FillSpec(
        vFILLSPEC(vFILL_SOLID, vCOLOUR(255, 0, 0), vCOLOUR(), vANGLE(), vFILL_WINDING, vPOINT()));
    surface->LineSpec(no_line());
    surface->DrawRect(place);
    EXPECT_EQ(vIMAGECACHE::Draw(1234, target.device, context, 10), nullptr);
    EXPECT_EQ(target.text()[20], std::string(40, 'r'));
}

TEST(ImageCache, OtherDevicesAreDrawnOnDirectlyOnce)
{
    const vIMAGECACHE handle;
    vMETAFILE recording;
    const vRECT place(0, 0, 40, 40);
    const oDIBCONTEXT context(1, 1, &place, nullptr, nullptr, vIMAGECOLOUR(), vTILEINFO());
    EXPECT_EQ(vIMAGECACHE::Draw(1, recording, context, -1), &recording);
    EXPECT_EQ(vIMAGECACHE::Draw(1, recording, context, -1), nullptr);
    EXPECT_EQ(vIMAGECACHE::Draw(1, recording, context, -1), &recording);
    EXPECT_EQ(vIMAGECACHE::Draw(1, recording, context, -1), nullptr);
}

TEST(ImageCache, WorksWithoutAHandle)
{
    oMEMDIB bitmap = dib_of({"r"});
    oDIBIMAGE image(bitmap);
    const vRECT place(0, 0, 2, 1);
    oDIBCONTEXT context(1, 1, &place, nullptr, nullptr, vIMAGECOLOUR(), vTILEINFO());
    canvas target(3, 1);
    image.Draw(target.device, context);
    EXPECT_EQ(target.text(), (picture{"rr."}));
    EXPECT_FALSE(vIMAGECACHE::LockItem(image.Id(), 1));
}

TEST(ImageCache, LocksByImage)
{
    const vIMAGECACHE handle;
    oMEMDIB bitmap = dib_of({"r"});
    oDIBIMAGE image(bitmap);
    const vRECT place(0, 0, 2, 1);
    oDIBCONTEXT context(1, 1, &place, nullptr, nullptr, vIMAGECOLOUR(), vTILEINFO());
    canvas target(3, 1);
    image.Draw(target.device, context);
    EXPECT_FALSE(vIMAGECACHE::QyItemIsLocked(image.Id()));
    EXPECT_TRUE(vIMAGECACHE::LockItem(image.Id(), 1));
    EXPECT_TRUE(vIMAGECACHE::QyItemIsLocked(image.Id()));
    EXPECT_TRUE(vIMAGECACHE::LockItem(image.Id(), 0));
    EXPECT_TRUE(vIMAGECACHE::LockItemImage(image.Id(), 0, 1));
    EXPECT_FALSE(vIMAGECACHE::LockItemImage(image.Id(), 1, 1));
    EXPECT_TRUE(vIMAGECACHE::LockItemImage(image.Id(), 0, 0));
}

TEST(Image, APictureIsClippedToItsDestination)
{
    const vIMAGECACHE handle;
    vMETAFILE recorded;
    recorded.LineSpec(no_line());
    recorded.FillSpec(
        vFILLSPEC(vFILL_SOLID, vCOLOUR(0, 0, 255), vCOLOUR(), vANGLE(), vFILL_WINDING, vPOINT()));
    recorded.DrawRect(vRECT(-500, 0, 100, 100));
    recorded.LogicalExtents(0, 100, 0, 100);
    recorded.EndMetaFile();
    oMFIMAGE image(recorded);
    const vRECT place(2, 0, 4, 2);
    oMFCONTEXT context(100, 100, &place, nullptr, nullptr, 0.0, 0, 0, 0);
    canvas target(6, 3);
    EXPECT_EQ(image.Draw(target.device, context), 1);
    EXPECT_EQ(target.text(), (picture{"..bb..", "..bb..", "......"}));
}

TEST(Image, TilesCoverAShapeFromAnOrigin)
{
    oMEMDIB bitmap = dib_of({"rg"});
    oDIBIMAGE image(bitmap);
    const vRECT tile(0, 0, 2, 1);
    const oDIBCONTEXT context(2, 1, &tile, nullptr, nullptr, vIMAGECOLOUR(), vTILEINFO());
    canvas grid(6, 3);
    EXPECT_EQ(image.Tile(grid.device, context, vRECTSHAPE(vRECT(1, 0, 5, 2)), vPOINT(1, 0), vTILE_GRID), 1);
    EXPECT_EQ(grid.text(), (picture{".rgrg.", ".rgrg.", "......"}));
    canvas shifted(6, 3);
    image.Tile(shifted.device, context, vRECTSHAPE(vRECT(1, 0, 5, 2)), vPOINT(1, 0), vTILE_ROWS_SHIFTED);
    EXPECT_EQ(shifted.text(), (picture{".rgrg.", ".grgr.", "......"}));
}

} // namespace
} // namespace klv
