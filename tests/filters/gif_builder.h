#pragma once

#include "klv/base/byte_writer.h"
#include "klv/filters/gif/gif_format.h"

#include <cstdint>
#include <string>
#include <vector>

namespace klv::test {

/// The codes of a GIF image, packed by hand: each with the bits it is to have.
class gif_codes {
public:
    gif_codes& put(std::uint32_t code, unsigned bits)
    {
        held_ |= std::uint64_t{code} << count_;
        for (count_ += bits; count_ >= 8; count_ -= 8, held_ >>= 8)
            bytes_.push_back(static_cast<std::uint8_t>(held_ & 0xFF));
        return *this;
    }
    /// The bytes, with the last one filled up.
    std::vector<std::uint8_t> bytes() const
    {
        auto all = bytes_;
        if (count_ != 0)
            all.push_back(static_cast<std::uint8_t>(held_ & 0xFF));
        return all;
    }

private:
    std::vector<std::uint8_t> bytes_;
    std::uint64_t held_ = 0;
    unsigned count_ = 0;
};

/// A GIF file, block by block.
class gif_builder {
public:
    /// A table of 2^bits colours, entry i being red i, green 0, blue 255 - i; no table for 0 bits.
    explicit gif_builder(unsigned bits, std::uint8_t aspect = 0)
    {
        out_.text("GIF89a");
        gif_screen_descriptor{.width = 100, .height = 100, .flags = flags(bits), .aspect = aspect}.write(
            out_);
        colours(bits, 0);
    }
    /// An image descriptor, with a colour table of its own whose greens are 255 when local_bits is not 0.
    gif_builder& image(
        std::uint16_t width, std::uint16_t height, bool interlaced = false, unsigned local_bits = 0)
    {
        auto packed = flags(local_bits);
        if (interlaced)
            packed.packed |= gif_image_descriptor::interlace_flag;
        out_.u8(gif_image_separator);
        gif_image_descriptor{.left = 7, .top = 5, .width = width, .height = height, .flags = packed}.write(
            out_);
        colours(local_bits, 255);
        return *this;
    }
    /// Minimum code size and sub-blocks of at most block_size bytes.
    gif_builder& data(
        unsigned literal_bits, const std::vector<std::uint8_t>& bytes, std::size_t block_size = 255)
    {
        out_.u8(static_cast<std::uint8_t>(literal_bits));
        for (std::size_t at = 0; at < bytes.size(); at += block_size) {
            const std::size_t length = std::min(block_size, bytes.size() - at);
            out_.u8(static_cast<std::uint8_t>(length));
            out_.bytes(std::span(bytes).subspan(at, length));
        }
        out_.u8(0);
        return *this;
    }
    gif_builder& add(const std::vector<std::uint8_t>& bytes)
    {
        out_.bytes(bytes);
        return *this;
    }
    std::vector<std::uint8_t> end()
    {
        out_.u8(gif_trailer);
        return bytes();
    }
    std::vector<std::uint8_t> bytes() const { return {out_.span().begin(), out_.span().end()}; }

private:
    static gif_table_flags flags(unsigned bits)
    {
        return {static_cast<std::uint8_t>(bits == 0 ? 0 : gif_table_flags::present | (bits - 1))};
    }
    void colours(unsigned bits, std::uint8_t green)
    {
        for (unsigned i = 0; bits != 0 && i < 1U << bits; ++i) {
            out_.u8(static_cast<std::uint8_t>(i));
            out_.u8(green);
            out_.u8(static_cast<std::uint8_t>(255 - i));
        }
    }

    byte_writer out_;
};

/// Codes of pixels that are literals only: a clear code before the table can grow the code size.
inline std::vector<std::uint8_t> literal_codes(unsigned literal_bits, const std::vector<std::uint8_t>& pixels)
{
    gif_codes codes;
    const unsigned bits = literal_bits + 1;
    const std::uint32_t clear = 1U << literal_bits;
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        if (i % (clear - 2) == 0)
            codes.put(clear, bits);
        codes.put(pixels[i], bits);
    }
    return codes.put(clear + 1, bits).bytes();
}

} // namespace klv::test
