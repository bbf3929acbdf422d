#include "klv/base/byte_reader.h"
#include "klv/imaging/magick_codec.h"
#include "klv/imaging/resolution.h"

#include <array>

namespace klv::imaging {

namespace {

constexpr std::uint8_t manufacturer = 10;
constexpr std::uint8_t newest_version = 5;
constexpr std::size_t header_bytes = 128;
/// A run of 63 bytes takes two; in a plane of single bits each holds 8 pixels.
constexpr std::uint64_t most_pixels_in_byte = 63 / 2 * 8 + 8;

/// The header of 128 bytes.
struct pcx_header {
    std::uint8_t bits = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::uint16_t x_resolution = 0;
    std::uint16_t y_resolution = 0;
    std::uint8_t planes = 0;

    static pcx_header read(byte_reader& in)
    {
        pcx_header found;
        in.skip(3); // manufacturer, version, encoding
        found.bits = in.u8();
        const std::int32_t left = in.u16le();
        const std::int32_t top = in.u16le();
        found.width = in.u16le() - left + 1;
        found.height = in.u16le() - top + 1;
        found.x_resolution = in.u16le();
        found.y_resolution = in.u16le();
        in.skip(48 + 1); // 16 colours, reserved
        found.planes = in.u8();
        return found;
    }

    /// Delivered bits per pixel; 0 for a layout that there is not.
    [[nodiscard]] std::int32_t delivered_bits() const
    {
        if (bits == 8)
            return planes == 1 ? 8 : planes == 3 ? 24 : 0;
        if (bits == 1 && planes == 1)
            return 1;
        const int indices = bits * planes;
        return (bits == 1 || planes == 1) && indices >= 2 && indices <= 4 ? 4 : 0;
    }
};

bool recognises(std::span<const std::uint8_t> start)
{
    return start.size() >= header_bytes && start[0] == manufacturer && start[1] <= newest_version
        && start[2] <= 1 && (start[3] == 1 || start[3] == 2 || start[3] == 4 || start[3] == 8);
}

imaging_result info(image_io& in, file_info& info)
{
    std::array<std::uint8_t, header_bytes> bytes{};
    const std::size_t size = in.read(bytes);
    byte_reader reader({bytes.data(), size});
    const pcx_header header = pcx_header::read(reader);
    if (!reader.ok() || header.width <= 0 || header.height <= 0)
        return imaging_bad_data;
    if (header.delivered_bits() == 0)
        return imaging_unsupported;
    info.width = header.width;
    info.height = header.height;
    info.bits_per_pixel = header.delivered_bits();
    info.perspective = bottom_left;
    info.x_resolution = header.x_resolution;
    info.y_resolution = header.y_resolution;
    return promises_too_much(in, info, most_pixels_in_byte) ? imaging_bad_data : magick_available();
}

imaging_result load(
    image_io& in, const file_info& info, bitmap_handle& bitmap, load_callback callback, void* user)
{
    return magick_load({.format = "PCX"}, in, info, bitmap, callback, user);
}

imaging_result save(image_io& out, const bitmap_handle& bitmap, line_source& lines, std::int32_t)
{
    return magick_save("PCX", out, bitmap, lines);
}

} // namespace

const codec pcx_codec{format_pcx, recognises, info, load, save, nullptr};

} // namespace klv::imaging
