#include "klv/devices/bitmap/packed_dib.h"

#include "klv/bitmaps/dib.h"

#include <cstring>
#include <span>

namespace klv {

packed_dib::packed_dib(const oDIB& bitmap) noexcept
{
    const std::int32_t lines = bitmap.Height();
    const std::uint64_t pixel_bytes
        = std::uint64_t{bitmap.BytesPerLine()} * static_cast<std::uint32_t>(lines < 0 ? 0 : lines);
    if (bitmap.Width() <= 0 || pixel_bytes == 0 || pixel_bytes > UINT32_MAX)
        return;
    const std::span<const RGBQUAD> colours
        = bitmap.ColourDepth() <= 8 ? bitmap.colours() : std::span<const RGBQUAD>{};
    bits_at_ = sizeof(BITMAPINFOHEADER) + colours.size_bytes();
    if (!block_.resize_uninitialized(bits_at_ + static_cast<std::size_t>(pixel_bytes)))
        return;

    BITMAPINFOHEADER header = bitmap.InfoHeader();
    header.biCompression = BI_RGB;
    header.biSizeImage = static_cast<DWORD>(pixel_bytes);
    header.biClrUsed = static_cast<DWORD>(colours.size());
    std::memcpy(block_.data(), &header, sizeof header);
    if (!colours.empty())
        std::memcpy(block_.data() + sizeof header, colours.data(), colours.size_bytes());
    if (!bitmap.GetImageLines(0, lines, block_.data() + bits_at_, nullptr))
        block_.release();
}

} // namespace klv
