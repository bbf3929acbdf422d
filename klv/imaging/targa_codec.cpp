#include "klv/base/byte_reader.h"
#include "klv/imaging/magick_codec.h"

#include <array>

namespace klv::imaging {

namespace {

constexpr std::size_t header_bytes = 18;
/// A run of 128 pixels of one byte takes two bytes; uncompressed pixels of single bits come eight in one.
constexpr std::uint64_t most_pixels_in_byte = 64;

enum image_type : std::uint8_t { indexed = 1, true_colour = 2, grey = 3 };
/// Added to the type when the pixels come in runs.
constexpr std::uint8_t run_lengths = 8;

/// The header of 18 bytes.
struct targa_header {
    std::uint8_t map_type = 0;
    std::uint8_t type = 0;
    std::uint16_t map_length = 0;
    std::uint8_t map_bits = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::uint8_t bits = 0;
    bool from_right = false;

    static targa_header read(byte_reader& in)
    {
        targa_header found;
        in.skip(1); // length of the identification
        found.map_type = in.u8();
        found.type = in.u8();
        in.skip(2); // first entry of the colour map
        found.map_length = in.u16le();
        found.map_bits = in.u8();
        in.skip(4); // origin
        found.width = in.u16le();
        found.height = in.u16le();
        found.bits = in.u8();
        found.from_right = (in.u8() & 0x10) != 0;
        return found;
    }

    /// Delivered bits per pixel; 0 for a layout that there is not.
    [[nodiscard]] std::int32_t delivered_bits() const
    {
        const bool deep = bits == 15 || bits == 16 || bits == 24 || bits == 32;
        switch (type & ~run_lengths) {
        case indexed:
            if (map_type != 1 || map_length == 0 || (bits != 8 && bits != 16))
                return 0;
            // The library gives pictures whose colours are partly transparent no palette.
            return bits == 8 && map_length <= 256 && map_bits != 32 ? 8 : 24;
        case true_colour:
            return deep ? 24 : 0;
        case grey:
            return bits == 1 || bits == 8 ? bits : 0;
        default:
            return 0;
        }
    }
};

/// There is no signature: a file whose header makes sense is one.
bool recognises(std::span<const std::uint8_t> start)
{
    byte_reader in(start);
    const targa_header header = targa_header::read(in);
    return start.size() > header_bytes && header.map_type <= 1 && header.width > 0 && header.height > 0
        && header.delivered_bits() != 0;
}

targa_header read_header(image_io& in)
{
    std::array<std::uint8_t, header_bytes> bytes{};
    const std::size_t size = in.read(bytes);
    byte_reader reader({bytes.data(), size});
    return targa_header::read(reader);
}

imaging_result info(image_io& in, file_info& info)
{
    const targa_header header = read_header(in);
    info.width = header.width;
    info.height = header.height;
    info.bits_per_pixel = header.delivered_bits();
    info.perspective = bottom_left;
    return promises_too_much(in, info, most_pixels_in_byte) ? imaging_bad_data : magick_available();
}

imaging_result load(
    image_io& in, const file_info& info, bitmap_handle& bitmap, load_callback callback, void* user)
{
    const targa_header header = read_header(in);
    return magick_load({.format = "TGA", .mirrored = header.from_right}, in, info, bitmap, callback, user);
}

imaging_result save(image_io& out, const bitmap_handle& bitmap, line_source& lines, std::int32_t)
{
    return magick_save("TGA", out, bitmap, lines);
}

} // namespace

const codec targa_codec{format_targa, recognises, info, load, save, nullptr};

} // namespace klv::imaging
