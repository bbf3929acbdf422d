// The entry points of the imaging module. Nothing thrown leaves them.
#include "klv/imaging/codec.h"
#include "klv/imaging/image_io.h"
#include "klv/imaging/imaging_api.h"

#include <algorithm>
#include <array>
#include <new>
#include <span>
#include <vector>

#define KLV_IMAGING_EXPORT __attribute__((visibility("default")))

namespace klv::imaging {

namespace {

// What L_RedirectIO and L_SetDimension choose holds for the thread that calls them.
constinit thread_local redirection redirected;
constinit thread_local dimension wanted_of_photo_cd{};
constinit thread_local dimension wanted_of_flashpix{};

std::int64_t line_bytes(std::int32_t width, std::int32_t bits)
{
    return (std::int64_t{width} * bits + 31) / 32 * 4;
}

bool deliverable_depth(std::int32_t bits)
{
    return bits == 1 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32;
}

const codec* codec_of_file(image_io& in)
{
    std::array<std::uint8_t, recognised_bytes> start{};
    const std::size_t size = in.read(start);
    if (!in.seek(0))
        return nullptr;
    for (const codec& each : codecs())
        if (each.recognises(std::span(start).first(size)))
            return &each;
    return nullptr;
}

const codec* codec_of_format(std::uint16_t format)
{
    const auto found = std::ranges::find(codecs(), format, &codec::format);
    return found == codecs().end() ? nullptr : &*found;
}

template <class Operation> std::int32_t guarded(Operation operation) noexcept
{
    try {
        return operation();
    } catch (const std::bad_alloc&) {
        return imaging_no_memory;
    } catch (...) {
        return imaging_failed;
    }
}

dimension& wanted_of_format(std::uint16_t format)
{
    return format == format_photo_cd ? wanted_of_photo_cd : wanted_of_flashpix;
}

imaging_result describe(const codec& format, image_io& in, file_info& info)
{
    info = {};
    info.format = format.format;
    if (format.dimensions) {
        const dimension wanted = wanted_of_format(format.format);
        info.width = wanted.width;
        info.height = wanted.height;
    }
    return format.info(in, info);
}

imaging_result describe_file(const char* name, file_info& info)
{
    image_io in(redirected, name, image_io::access::reading);
    if (!in.is_open())
        return imaging_read_error;
    const codec* const format = codec_of_file(in);
    return format ? describe(*format, in, info) : imaging_unsupported;
}

imaging_result load_file(const char* name, bitmap_handle& bitmap, load_callback callback, void* user)
{
    image_io in(redirected, name, image_io::access::reading);
    if (!in.is_open())
        return imaging_read_error;
    const codec* const format = codec_of_file(in);
    if (!format)
        return imaging_unsupported;
    file_info info{};
    const imaging_result described = describe(*format, in, info);
    if (described != imaging_ok)
        return described;
    bitmap.width = info.width;
    bitmap.height = info.height;
    bitmap.perspective = info.perspective;
    bitmap.x_resolution = info.x_resolution;
    bitmap.y_resolution = info.y_resolution;
    // 16 and 32 bits are delivered as 24.
    bitmap.bits_per_pixel = info.bits_per_pixel == 16 || info.bits_per_pixel == 32 ? 24 : info.bits_per_pixel;
    const std::int64_t bytes = line_bytes(bitmap.width, bitmap.bits_per_pixel);
    if (bytes > INT32_MAX || !in.seek(0))
        return imaging_bad_data;
    bitmap.bytes_per_line = static_cast<std::int32_t>(bytes);
    return format->load(in, info, bitmap, callback, user);
}

imaging_result save_file(const char* name, const bitmap_handle& bitmap, std::uint16_t number,
    std::int32_t quality, save_callback callback, void* user)
{
    const codec* const format = codec_of_format(number);
    if (!format || !format->save)
        return imaging_unsupported;
    image_io out(redirected, name, image_io::access::writing);
    if (!out.is_open())
        return imaging_write_error;
    line_source lines(bitmap, callback, user);
    return format->save(out, bitmap, lines, quality);
}

imaging_result list_dimensions(
    const char* name, std::uint16_t number, std::span<dimension> places, std::uint32_t& stored)
{
    const codec* const format = codec_of_format(number);
    if (!format || !format->dimensions)
        return imaging_unsupported;
    image_io in(redirected, name, image_io::access::reading);
    if (!in.is_open())
        return imaging_read_error;
    std::vector<dimension> found;
    const imaging_result result = format->dimensions(in, found);
    const std::size_t count = std::min(found.size(), places.size());
    std::copy_n(found.begin(), count, places.begin());
    stored = static_cast<std::uint32_t>(count);
    return result;
}

} // namespace

extern "C" {

KLV_IMAGING_EXPORT std::int32_t L_RedirectIO(open_callback open, read_callback read, write_callback write,
    seek_callback seek, close_callback close, void* user)
{
    redirected = {open, read, write, seek, close, user};
    return imaging_ok;
}

KLV_IMAGING_EXPORT std::int32_t L_InitBitmap(
    bitmap_handle* bitmap, std::int32_t width, std::int32_t height, std::int32_t bits_per_pixel)
{
    if (!bitmap || width <= 0 || height <= 0 || !deliverable_depth(bits_per_pixel)
        || line_bytes(width, bits_per_pixel) > INT32_MAX)
        return imaging_bad_data;
    *bitmap = {};
    bitmap->width = width;
    bitmap->height = height;
    bitmap->bits_per_pixel = bits_per_pixel;
    bitmap->bytes_per_line = static_cast<std::int32_t>(line_bytes(width, bits_per_pixel));
    bitmap->perspective = top_left;
    bitmap->valid = true;
    return imaging_ok;
}

KLV_IMAGING_EXPORT std::int32_t L_CreateBitmap(bitmap_handle* bitmap, std::int32_t, std::int32_t width,
    std::int32_t height, std::int32_t bits_per_pixel, std::int32_t colour_order, const RGBQUAD* colours,
    std::int32_t perspective)
{
    const std::int32_t made = L_InitBitmap(bitmap, width, height, bits_per_pixel);
    if (made != imaging_ok)
        return made;
    bitmap->colour_order = colour_order;
    bitmap->perspective = perspective;
    if (colours && bits_per_pixel <= 8) {
        bitmap->colour_count = 1U << bits_per_pixel;
        std::copy_n(colours, bitmap->colour_count, bitmap->colours);
    }
    return imaging_ok;
}

KLV_IMAGING_EXPORT std::int32_t L_FreeBitmap(bitmap_handle* bitmap)
{
    if (!bitmap || !bitmap->valid)
        return imaging_failed;
    bitmap->valid = false;
    return imaging_ok;
}

KLV_IMAGING_EXPORT std::int32_t L_ConvertToDIB(const bitmap_handle* bitmap, BITMAPINFOHEADER* header)
{
    if (!bitmap || !header || !bitmap->valid)
        return imaging_failed;
    constexpr double inches_in_metre = 1 / 0.0254;
    *header = {};
    header->biSize = sizeof(BITMAPINFOHEADER);
    header->biWidth = bitmap->width;
    header->biHeight = bitmap->height;
    header->biPlanes = 1;
    header->biBitCount = static_cast<WORD>(bitmap->bits_per_pixel);
    header->biXPelsPerMeter = static_cast<LONG>(std::clamp(bitmap->x_resolution, 0, 50000) * inches_in_metre);
    header->biYPelsPerMeter = static_cast<LONG>(std::clamp(bitmap->y_resolution, 0, 50000) * inches_in_metre);
    header->biClrUsed = bitmap->colour_count;
    return imaging_ok;
}

KLV_IMAGING_EXPORT std::int32_t L_AccessBitmap(bitmap_handle* bitmap)
{
    return bitmap && bitmap->valid ? imaging_ok : imaging_failed;
}

KLV_IMAGING_EXPORT std::int32_t L_ReleaseBitmap(bitmap_handle* bitmap)
{
    return bitmap && bitmap->valid ? imaging_ok : imaging_failed;
}

KLV_IMAGING_EXPORT std::int32_t L_GetBitmapColors(
    const bitmap_handle* bitmap, std::uint32_t first, std::uint32_t count, RGBQUAD* colours)
{
    if (!bitmap || !colours || first > bitmap->colour_count || count > bitmap->colour_count - first)
        return imaging_failed;
    std::copy_n(bitmap->colours + first, count, colours);
    return imaging_ok;
}

KLV_IMAGING_EXPORT std::int32_t L_PutBitmapColors(
    bitmap_handle* bitmap, std::uint32_t first, std::uint32_t count, const RGBQUAD* colours)
{
    constexpr std::uint32_t most = 256;
    if (!bitmap || !colours || first > most || count > most - first)
        return imaging_failed;
    std::copy_n(colours, count, bitmap->colours + first);
    bitmap->colour_count = std::max(bitmap->colour_count, first + count);
    return imaging_ok;
}

KLV_IMAGING_EXPORT std::int32_t L_FileInfo(const char* name, file_info* info)
{
    if (!info)
        return imaging_failed;
    return guarded([&] { return describe_file(name, *info); });
}

KLV_IMAGING_EXPORT std::int32_t L_LoadFile(const char* name, bitmap_handle* bitmap, std::int32_t,
    std::int32_t, std::uint32_t, load_callback callback, void* user)
{
    if (!bitmap || !bitmap->valid || !callback)
        return imaging_failed;
    return guarded([&] { return load_file(name, *bitmap, callback, user); });
}

KLV_IMAGING_EXPORT std::int32_t L_SaveFile(const char* name, bitmap_handle* bitmap, std::uint16_t format,
    std::int32_t, std::int32_t quality, std::uint32_t, save_callback callback, void* user)
{
    if (!bitmap || !bitmap->valid || !callback)
        return imaging_failed;
    return guarded([&] { return save_file(name, *bitmap, format, quality, callback, user); });
}

KLV_IMAGING_EXPORT std::int32_t L_EnumDimensions(
    const char* name, std::uint16_t format, dimension* table, std::uint32_t* count)
{
    if (!count)
        return imaging_failed;
    const std::span<dimension> places(table, table ? *count : 0);
    *count = 0;
    return guarded([&] { return list_dimensions(name, format, places, *count); });
}

KLV_IMAGING_EXPORT std::int32_t L_SetDimension(std::uint16_t format, std::int32_t width, std::int32_t height)
{
    const codec* const known = codec_of_format(format);
    if (!known || !known->dimensions)
        return imaging_unsupported;
    if (width < 0 || height < 0)
        return imaging_bad_data;
    wanted_of_format(format) = {width, height};
    return imaging_ok;
}

} // extern "C"

} // namespace klv::imaging
