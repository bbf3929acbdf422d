#pragma once

#include "klv/base/byte_reader.h"
#include "klv/base/byte_writer.h"

#include <cstdint>

/// The records of a GIF file that its reader and its writer share: "Graphics Interchange Format, Version
/// 89a", CompuServe 1990. All numbers are little-endian.
namespace klv {

inline constexpr std::uint8_t gif_extension_introducer = 0x21;
inline constexpr std::uint8_t gif_image_separator = 0x2C;
inline constexpr std::uint8_t gif_trailer = 0x3B;
inline constexpr std::uint32_t gif_signature_size = 6; ///< "GIF" and three bytes of version
inline constexpr std::uint32_t gif_bytes_per_colour = 3; ///< red, green, blue

/// What the packed byte of a descriptor says of the colour table that follows it.
struct gif_table_flags {
    std::uint8_t packed = 0;

    static constexpr std::uint8_t present = 0x80;
    static constexpr std::uint8_t size_mask = 0x07;

    [[nodiscard]] bool has_table() const { return (packed & present) != 0; }
    /// Bits that index the table: 1 to 8.
    [[nodiscard]] std::uint8_t colour_bits() const
    {
        return static_cast<std::uint8_t>((packed & size_mask) + 1);
    }
};

/// Logical screen descriptor.
struct gif_screen_descriptor {
    std::uint16_t width = 0;
    std::uint16_t height = 0;
    gif_table_flags flags;
    std::uint8_t background = 0;
    std::uint8_t aspect = 0; ///< pixel width by height is (aspect + 15) / 64; 0 says nothing

    static constexpr std::uint32_t size = 7;

    static gif_screen_descriptor read(byte_reader& in)
    {
        gif_screen_descriptor screen;
        screen.width = in.u16le();
        screen.height = in.u16le();
        screen.flags.packed = in.u8();
        screen.background = in.u8();
        screen.aspect = in.u8();
        return screen;
    }
    void write(byte_writer& out) const
    {
        out.u16le(width);
        out.u16le(height);
        out.u8(flags.packed);
        out.u8(background);
        out.u8(aspect);
    }
};

/// Image descriptor, without the separator before it.
struct gif_image_descriptor {
    std::uint16_t left = 0;
    std::uint16_t top = 0;
    std::uint16_t width = 0;
    std::uint16_t height = 0;
    gif_table_flags flags;

    static constexpr std::uint32_t size = 9;
    static constexpr std::uint8_t interlace_flag = 0x40;

    [[nodiscard]] bool interlaced() const { return (flags.packed & interlace_flag) != 0; }

    static gif_image_descriptor read(byte_reader& in)
    {
        gif_image_descriptor image;
        image.left = in.u16le();
        image.top = in.u16le();
        image.width = in.u16le();
        image.height = in.u16le();
        image.flags.packed = in.u8();
        return image;
    }
    void write(byte_writer& out) const
    {
        out.u16le(left);
        out.u16le(top);
        out.u16le(width);
        out.u16le(height);
        out.u8(flags.packed);
    }
};

} // namespace klv
