#include "klv/bitmaps/dib_header.h"

#include "klv/base/wrapping.h"

#include <limits>

namespace klv {

namespace {

constexpr std::int32_t default_pixels_per_metre = 100;

std::uint32_t image_size(std::int32_t width, std::int32_t height, std::uint32_t bits)
{
    if (width <= 0 || height <= 0)
        return 0;
    const std::uint64_t size
        = dib_stride(static_cast<std::uint32_t>(width), bits) * static_cast<std::uint32_t>(height);
    return size <= std::numeric_limits<std::uint32_t>::max() ? static_cast<std::uint32_t>(size) : 0;
}

} // namespace

oDIBHEADER::oDIBHEADER() noexcept
{
    info_.biSize = dib_header::info_size;
    info_.biHeight = 1;
    info_.biPlanes = 1;
    info_.biBitCount = layout_of(model_).bits;
    info_.biXPelsPerMeter = default_pixels_per_metre;
    info_.biYPelsPerMeter = default_pixels_per_metre;
}

oDIBHEADER::oDIBHEADER(std::int32_t width, std::int32_t height, std::int32_t horizontal_dpi,
    std::int32_t vertical_dpi, oCOLOUR_MODEL model) noexcept
    : oDIBHEADER()
{
    model_ = model;
    set_size(width, height, layout_of(model).bits);
    info_.biXPelsPerMeter = wrap_mul(horizontal_dpi, pixels_per_metre_of_dpi);
    info_.biYPelsPerMeter = wrap_mul(vertical_dpi, pixels_per_metre_of_dpi);
    info_.biClrUsed = layout_of(model).colours;
}

oDIBHEADER oDIBHEADER::of_depth(
    std::int32_t width, std::int32_t height, std::uint16_t bits, oCOLOUR_MODEL model) noexcept
{
    oDIBHEADER header;
    header.model_ = model;
    header.set_size(width, height, bits);
    header.info_.biClrUsed = bits == 0 || bits >= 32 ? 0 : std::uint32_t{1} << bits;
    return header;
}

void oDIBHEADER::set_size(std::int32_t width, std::int32_t height, std::uint16_t bits) noexcept
{
    info_.biWidth = width;
    info_.biHeight = height;
    info_.biBitCount = bits;
    info_.biSizeImage = image_size(width, height, bits);
}

std::int32_t oDIBHEADER::HorzDPI() const noexcept { return info_.biXPelsPerMeter / pixels_per_metre_of_dpi; }
std::int32_t oDIBHEADER::VertDPI() const noexcept { return info_.biYPelsPerMeter / pixels_per_metre_of_dpi; }

std::uint32_t oDIBHEADER::BytesPerLine() const noexcept
{
    return info_.biHeight > 0 ? info_.biSizeImage / static_cast<std::uint32_t>(info_.biHeight) : 0;
}

} // namespace klv
