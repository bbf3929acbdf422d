// How the tiles of an image lie over its destination.
#include "klv/base/wrapping.h"
#include "klv/bitmaps/image_context.h"
#include "klv/bitmaps/tile_info.h"

namespace klv {

namespace {

/// Where the tile begins that covers `start`, tiles of this size being laid from the origin on.
std::int32_t first_tile_start(std::int32_t start, std::int32_t origin, std::int32_t size)
{
    std::int64_t into_tile = (std::int64_t{start} - origin) % size;
    if (into_tile < 0)
        into_tile += size;
    return wrap_narrow(start - into_tile);
}

} // namespace

void vTILEINFO::CalculateImageRect(
    vDEVICE& device, oIMGCONTEXT& context, vRECT* image, vRECT* area, vRECT* tile) noexcept
{
    vRECT destination = context.GetDstRect();
    const bool fixed_size = mode_ != vTILE_BY_COUNT && size_.Width() > 0 && size_.Height() > 0;
    vRECT first;
    if (type_ == vTILE_NONE) {
        first = destination;
    } else if (fixed_size) {
        CalculateTilesAcrossDown(device, destination);
        const vPOINT corner(
            first_tile_start(destination.Left(), wrap_add(destination.Left(), origin_.x), size_.Width()),
            first_tile_start(destination.Top(), wrap_add(destination.Top(), origin_.y), size_.Height()));
        first = vRECT(corner, size_.Width(), size_.Height());
    } else {
        first = vRECT(destination.TopLeft(), destination.Width() / across_, destination.Height() / down_);
    }
    const bool counted = type_ != vTILE_NONE;
    if (tile)
        *tile = first;
    if (area)
        *area = destination;
    if (image)
        *image = vRECT(first.TopLeft(), wrap_mul(first.Width(), counted ? across_ : 1),
            wrap_mul(first.Height(), counted ? down_ : 1));
}

} // namespace klv
