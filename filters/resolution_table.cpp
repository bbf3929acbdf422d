#include "filters/resolution_table.h"

#include "filters/imaging_library.h"

#include <algorithm>

namespace klv {

std::uint32_t resolution_table::read(const vSTRING& file_name, std::uint16_t format) noexcept
{
    count_ = 0;
    const BMINTERFACE* const module = BMINTERFACE::get();
    std::uint32_t found = most;
    if (module && module->EnumDimensions(file_name(), format, sizes_.data(), &found) == imaging::imaging_ok)
        count_ = std::min(found, most);
    return count_;
}

vSIZE resolution_table::operator[](std::uint32_t index) const noexcept
{
    return index < count_ ? vSIZE(sizes_[index].width, sizes_[index].height) : vSIZE();
}

} // namespace klv
