#include "klv/imaging/magick_codec.h"

#include "klv/formats/believable_size.h"
#include "klv/imaging/bmp_layout.h"
#include "klv/imaging/magick_library.h"
#include "klv/imaging/memory_file.h"
#include "klv/imaging/pixel_lines.h"

#include <algorithm>
#include <vector>

namespace klv::imaging {

namespace {

/// Passes the lines of a Windows bitmap on as lines of the bitmap that the caller expects. The bitmap may
/// have fewer bits where few colours occur, and more where the file's palette is no palette.
class line_adapter {
public:
    line_adapter(
        const file_info& info, bitmap_handle& bitmap, bool mirrored, load_callback callback, void* user)
        : info_(info)
        , mirrored_(mirrored)
        , bitmap_(bitmap)
        , callback_(callback)
        , user_(user)
        , indices_(static_cast<std::size_t>(bitmap.width))
    {
    }

    static std::int32_t pass_on(const file_info&, const bitmap_handle& from, std::uint8_t* band,
        std::int32_t row, std::int32_t lines, void* self)
    {
        return static_cast<line_adapter*>(self)->deliver(from, band, row, lines);
    }

private:
    std::int32_t deliver(const bitmap_handle& from, std::uint8_t* band, std::int32_t row, std::int32_t lines)
    {
        if (row == 0)
            copy_colours(from);
        if (from.bits_per_pixel == bitmap_.bits_per_pixel && !mirrored_)
            return callback_(info_, bitmap_, band, row, lines, user_);
        const auto line_bytes = static_cast<std::size_t>(bitmap_.bytes_per_line);
        band_.assign(line_bytes * static_cast<std::size_t>(lines), 0);
        for (std::int32_t i = 0; i < lines; ++i)
            convert(from, band + static_cast<std::size_t>(i) * static_cast<std::size_t>(from.bytes_per_line),
                band_.data() + static_cast<std::size_t>(i) * line_bytes);
        return callback_(info_, bitmap_, band_.data(), row, lines, user_);
    }
    void copy_colours(const bitmap_handle& from)
    {
        if (bitmap_.bits_per_pixel > 8)
            return;
        bitmap_.colour_count = 1U << bitmap_.bits_per_pixel;
        std::fill_n(bitmap_.colours, bitmap_.colour_count, RGBQUAD{});
        std::copy_n(from.colours, std::min(from.colour_count, bitmap_.colour_count), bitmap_.colours);
    }
    void convert(const bitmap_handle& from, const std::uint8_t* source, std::uint8_t* line)
    {
        if (bitmap_.bits_per_pixel == 24) {
            expand_to_24(from, source, line);
            if (mirrored_)
                mirror_pixels(line, indices_.size(), 3);
            return;
        }
        unpack_indices(source, indices_.data(), indices_.size(), from.bits_per_pixel);
        if (mirrored_)
            mirror_pixels(indices_.data(), indices_.size(), 1);
        pack_indices(indices_.data(), line, indices_.size(), bitmap_.bits_per_pixel);
    }

    const file_info& info_;
    bool mirrored_;
    bitmap_handle& bitmap_;
    load_callback callback_;
    void* user_;
    std::vector<std::uint8_t> indices_;
    std::vector<std::uint8_t> band_;
};

} // namespace

imaging_result magick_available() { return magick_library::get() ? imaging_ok : imaging_library_missing; }

bool promises_too_much(image_io& in, const file_info& info, std::uint64_t expansion)
{
    const std::uint64_t pixels
        = std::uint64_t{static_cast<std::uint32_t>(info.width)} * static_cast<std::uint32_t>(info.height);
    return !believable_size(pixels, in.size(), expansion);
}

imaging_result magick_load(const magick_source& source, image_io& in, const file_info& info,
    bitmap_handle& bitmap, load_callback callback, void* user)
{
    const magick_library* const library = magick_library::get();
    if (!library)
        return imaging_library_missing;
    std::vector<std::uint8_t> bitmap_file;
    {
        const std::vector<std::uint8_t> file = in.read_all();
        const imaging_result converted
            = library->to_windows_bitmap(source.format, file, {info.width, info.height}, bitmap_file);
        if (converted != imaging_ok)
            return converted;
    }
    memory_file memory(bitmap_file);
    const redirection io = memory.io();
    image_io converted(io, nullptr, image_io::access::reading);
    file_info converted_info{};
    const imaging_result described = bmp::info(converted, converted_info);
    if (described != imaging_ok)
        return described;
    const bool same_size = converted_info.width == bitmap.width && converted_info.height == bitmap.height
        && converted_info.perspective == bitmap.perspective;
    const bool fits = bitmap.bits_per_pixel == 24 || converted_info.bits_per_pixel <= bitmap.bits_per_pixel;
    if (!same_size || !fits || !converted.seek(0))
        return imaging_bad_data;
    bitmap_handle converted_bitmap = bitmap;
    converted_bitmap.bits_per_pixel = std::min(converted_info.bits_per_pixel, 24);
    if (converted_info.bits_per_pixel == 16)
        converted_bitmap.bits_per_pixel = 24;
    converted_bitmap.bytes_per_line = static_cast<std::int32_t>(
        (std::int64_t{bitmap.width} * converted_bitmap.bits_per_pixel + 31) / 32 * 4);
    line_adapter adapter(info, bitmap, source.mirrored, callback, user);
    return bmp::load(converted, converted_info, converted_bitmap, line_adapter::pass_on, &adapter);
}

imaging_result magick_save(const char* format, image_io& out, const bitmap_handle& bitmap, line_source& lines)
{
    const magick_library* const library = magick_library::get();
    if (!library)
        return imaging_library_missing;
    if (bitmap.bits_per_pixel > 24)
        return imaging_unsupported;
    std::vector<std::uint8_t> file;
    {
        memory_file memory;
        const redirection io = memory.io();
        image_io bitmap_file(io, nullptr, image_io::access::writing);
        const imaging_result saved = bmp::save(bitmap_file, bitmap, lines, best_quality);
        if (saved != imaging_ok)
            return saved;
        const imaging_result converted
            = library->from_windows_bitmap(format, memory.bytes(), {bitmap.width, bitmap.height}, file);
        if (converted != imaging_ok)
            return converted;
    }
    return out.write(file) ? imaging_ok : imaging_write_error;
}

} // namespace klv::imaging
