#include "klv/bitmaps/tile_info.h"

#include "klv/base/wrapping.h"

#include <algorithm>
#include <cmath>

namespace klv {

vTILEINFO::vTILEINFO(const vTILETYPE& type, int across, int down) noexcept
    : type_(type)
    , across_(std::max(across, 1))
    , down_(std::max(down, 1))
{
}

int vTILEINFO::CompareNoScale(const vTILEINFO& other) const noexcept
{
    return type_ == other.type_ && across_ == other.across_ && down_ == other.down_ && mode_ == other.mode_;
}

bool vTILEINFO::operator==(const vTILEINFO& other) const noexcept
{
    return CompareNoScale(other) && (mode_ == vTILE_BY_COUNT || size_ == other.size_);
}

void vTILEINFO::CalculateTilesAcrossDown(vDEVICE&, vRECT& area) noexcept
{
    const bool fixed_size = mode_ == vTILE_FIXED_SIZE || mode_ == vTILE_FIXED_SIZE_AND_ONE;
    if (!fixed_size || size_.Width() <= 0 || size_.Height() <= 0)
        return;
    const int more = mode_ == vTILE_FIXED_SIZE_AND_ONE ? 1 : 0;
    const auto cover = [=](int length, int tile) {
        return std::max(wrap_add(truncate_wrapped(std::ceil(static_cast<double>(length) / tile)), more), 1);
    };
    across_ = cover(area.Width(), size_.Width());
    down_ = cover(area.Height(), size_.Height());
}

} // namespace klv
