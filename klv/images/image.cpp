#include "klv/images/image.h"

#include "klv/bitmaps/dib.h"
#include "klv/bitmaps/dib_context.h"
#include "klv/bitmaps/metafile_context.h"
#include "klv/core/integer_math.h"
#include "klv/devices/device.h"
#include "klv/gdi/gdi.h"
#include "klv/geometry/matrix.h"
#include "klv/geometry/primitive_shapes.h"
#include "klv/images/image_cache.h"
#include "klv/metafiles/metafile.h"
#include "klv/platform/system/handle_token.h"

#include <algorithm>
#include <memory>

namespace klv {

namespace {

constexpr std::uint32_t pixels_for_one = 10; ///< of a bitmap that is drawn enlarged
constexpr std::uint32_t greatest_rendering = 1200;
constexpr std::int32_t limit_of_the_cache = -1;

/// Tiles in one direction, at most: more than any surface has pixels.
constexpr std::int64_t most_tiles_in_a_row = 4096;

/// A source rectangle in units of a picture's bitmap as a part of the picture's extents.
vRECT part_of_extents(const vMETAFILE& picture, const oIMGCONTEXT& context)
{
    const vRECT& source = context.GetSrcRect();
    const auto x = [&](int value) {
        return wrap_add(
            picture.LogicalXOffset(), MulDiv(value, picture.LogicalWidth(), context.GetPixelWidth()));
    };
    const auto y = [&](int value) {
        return wrap_add(
            picture.LogicalYOffset(), MulDiv(value, picture.LogicalHeight(), context.GetPixelHeight()));
    };
    return vRECT(x(source.Left()), y(source.Top()), x(source.Right()), y(source.Bottom()));
}

/// The first tile that can show, and how many there are along one axis.
struct tile_run {
    tile_run(int area_start, int area_end, int origin, int size)
    {
        const std::int64_t before = std::int64_t{area_start} - origin;
        const std::int64_t whole = before >= 0 ? before / size : -((-before + size - 1) / size);
        first = whole - 1; // shifted rows reach half a tile further
        const std::int64_t last = (std::int64_t{area_end} - origin) / size + 1;
        count = std::clamp<std::int64_t>(last - first + 1, 0, most_tiles_in_a_row);
    }
    std::int64_t first;
    std::int64_t count;
};

} // namespace

oIMAGE::~oIMAGE()
{
    vIMAGECACHE::Clear(Id());
    release_token(this);
}

std::uint32_t oIMAGE::Id() const noexcept { return token_of(this); }

int oIMAGE::Tile(vDEVICE& device, const oIMGCONTEXT& context, const vSHAPE& area, const vPOINT& origin,
    vTILESPEC layout) noexcept
{
    const vRECT& tile = context.GetDstRect();
    const vRECT box = area.BoundBox();
    const int width = tile.Width();
    const int height = tile.Height();
    if (width <= 0 || height <= 0 || box.Width() <= 0 || box.Height() <= 0)
        return 0;
    const tile_run columns(box.Left(), box.Right(), origin.x, width);
    const tile_run rows(box.Top(), box.Bottom(), origin.y, height);
    device.PushClipArea();
    device.ClipArea(area, RGN_AND);
    for (std::int64_t row = rows.first; row < rows.first + rows.count; ++row) {
        for (std::int64_t column = columns.first; column < columns.first + columns.count; ++column) {
            const std::int64_t shift_x = layout == vTILE_ROWS_SHIFTED && row % 2 != 0 ? width / 2 : 0;
            const std::int64_t shift_y = layout == vTILE_COLUMNS_SHIFTED && column % 2 != 0 ? height / 2 : 0;
            const vPOINT corner(wrap_narrow(origin.x + column * width + shift_x),
                wrap_narrow(origin.y + row * height + shift_y));
            const std::unique_ptr<oIMGCONTEXT> placed(context.Duplicate());
            if (!placed)
                continue;
            placed->MoveTo(corner);
            if (device.ClipAreaIntersect(placed->GetRenderArea()))
                Draw(device, *placed);
        }
    }
    device.PopClipArea();
    return 1;
}

int oDIBIMAGE::Draw(vDEVICE& device, oIMGCONTEXT& context) noexcept
{
    const std::int32_t longer = std::max(bitmap_.Width(), bitmap_.Height());
    const std::uint32_t limit = longer > 0
        ? static_cast<std::uint32_t>(std::min<std::uint64_t>(
            std::uint64_t{static_cast<std::uint32_t>(longer)} * pixels_for_one, greatest_rendering))
        : greatest_rendering;
    const oDIBCONTEXT bitmap_context(context);
    while (
        vDEVICE* const target = vIMAGECACHE::Draw(Id(), device, context, static_cast<std::int32_t>(limit))) {
        oDIBCONTEXT drawn(bitmap_context);
        target->DrawDIB(bitmap_, drawn, nullptr, 0);
    }
    return 1;
}

int oMFIMAGE::Draw(vDEVICE& device, oIMGCONTEXT& context) noexcept
{
    const vRECT part = part_of_extents(picture_, context);
    while (vDEVICE* const target = vIMAGECACHE::Draw(Id(), device, context, limit_of_the_cache)) {
        vRECTSHAPE frame(context.GetDstRect());
        if (context.GetDistort())
            frame.Distort(context.GetDistort());
        target->PushClipArea();
        target->ClipArea(frame, RGN_AND);
        oMFCONTEXT drawn(picture_.LogicalWidth(), picture_.LogicalHeight(), &context.GetDstRect(), &part,
            context.GetDistort(), context.GetImageColour(), context.GetTileInfo());
        picture_.Draw(*target, drawn, nullptr);
        target->PopClipArea();
    }
    return 1;
}

} // namespace klv
