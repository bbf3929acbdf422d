#include "klv/imaging/codec.h"

#include <algorithm>
#include <array>

namespace klv::imaging {

namespace {

/// Bytes of lines that travel at a time; they stay in the nearer caches.
constexpr std::int32_t band_bytes = 1 << 16;
/// Lines are a multiple of this long; the last bytes may be padding.
constexpr std::int32_t line_alignment = 4;

std::int32_t lines_in_band(const bitmap_handle& bitmap)
{
    return std::clamp(band_bytes / std::max(bitmap.bytes_per_line, 1), 1, std::max(bitmap.height, 1));
}

std::size_t offset_of_line(const bitmap_handle& bitmap, std::int32_t line)
{
    return static_cast<std::size_t>(line) * static_cast<std::size_t>(bitmap.bytes_per_line);
}

} // namespace

line_sink::line_sink(const file_info& info, const bitmap_handle& bitmap, load_callback callback, void* user)
    : info_(info)
    , bitmap_(bitmap)
    , callback_(callback)
    , user_(user)
    , band_(offset_of_line(bitmap, lines_in_band(bitmap)))
    , band_lines_(lines_in_band(bitmap))
{
}

std::uint8_t* line_sink::next_line()
{
    if (filled_ == band_lines_ && !deliver())
        return nullptr;
    std::uint8_t* const line = band_.data() + offset_of_line(bitmap_, filled_++);
    std::fill_n(line + bitmap_.bytes_per_line - line_alignment, line_alignment, std::uint8_t{0});
    return line;
}

bool line_sink::finish() { return filled_ == 0 || deliver(); }

bool line_sink::deliver()
{
    const std::int32_t lines = filled_;
    filled_ = 0;
    if (!callback_(info_, bitmap_, band_.data(), delivered_, lines, user_))
        return false;
    delivered_ += lines;
    return true;
}

line_source::line_source(const bitmap_handle& bitmap, save_callback callback, void* user)
    : bitmap_(bitmap)
    , callback_(callback)
    , user_(user)
    , band_(offset_of_line(bitmap, lines_in_band(bitmap)))
    , band_lines_(lines_in_band(bitmap))
{
}

const std::uint8_t* line_source::line_from_top(std::int32_t index)
{
    const bool stored_bottom_up = bitmap_.perspective == bottom_left;
    return stored_line(stored_bottom_up ? bitmap_.height - 1 - index : index, stored_bottom_up);
}

const std::uint8_t* line_source::line_from_bottom(std::int32_t index)
{
    const bool stored_bottom_up = bitmap_.perspective == bottom_left;
    return stored_line(stored_bottom_up ? index : bitmap_.height - 1 - index, !stored_bottom_up);
}

const std::uint8_t* line_source::stored_line(std::int32_t index, bool descending)
{
    if (index < first_ || index >= first_ + count_) {
        // The band reaches from this line on in the direction of the reading.
        count_ = std::min(band_lines_, descending ? index + 1 : bitmap_.height - index);
        first_ = descending ? index + 1 - count_ : index;
        if (!callback_(bitmap_, band_.data(), first_, count_, user_)) {
            count_ = 0;
            return nullptr;
        }
    }
    return band_.data() + offset_of_line(bitmap_, index - first_);
}

std::span<const codec> codecs()
{
    // Targa files have no signature: whatever else a file may be comes first.
    static const std::array all{png_codec, jpeg_codec, bmp_codec, tiff_codec, photoshop_codec, flashpix_codec,
        photo_cd_codec, pcx_codec, targa_codec};
    return all;
}

} // namespace klv::imaging
