#pragma once

#include "klv/base/buffer.h"
#include "klv/filters/gif/gif_lzw.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace klv {

class vSTREAM;

/// Encodes the pixels of one image as GIF's LZW codes in sub-blocks of 254 bytes. The table is given up as
/// soon as it is full.
class gif_lzw_encoder {
public:
    explicit gif_lzw_encoder(vSTREAM& out)
        : out_(out)
    {
    }

    /// Begins with the clear code. literal_bits: the minimum code size, 2 to 8.
    /// \return false when memory is out
    [[nodiscard]] bool start(unsigned literal_bits) noexcept;
    /// Indices below 2^literal_bits, one a byte.
    /// \return false when the stream did not take everything
    [[nodiscard]] bool encode(std::span<const std::uint8_t> indices) noexcept;
    /// Writes the last codes and the block terminator.
    [[nodiscard]] bool finish() noexcept;

private:
    /// A string: its last pixel, the code of the rest, and its own code, in one number.
    using slot = std::uint32_t;
    static constexpr slot empty_slot = 0xFFFFFFFF;
    static constexpr unsigned slot_bits = 13;
    static constexpr std::uint32_t no_prefix = 0xFFFFFFFF;
    static constexpr std::size_t sub_block_size = 254;
    static constexpr std::size_t gathered_bytes = 16 * sub_block_size;
    /// Pixels that are encoded before the bytes are looked at; a pixel gives two codes at most.
    static constexpr std::size_t piece_pixels = 1024;
    static constexpr std::size_t most_bytes_of_piece = 4 * piece_pixels;

    /// Packs codes, least significant bit first.
    struct code_packer {
        std::uint8_t* to = nullptr;
        std::uint64_t bits = 0; ///< the lower bit_count ones are still to be written
        unsigned bit_count = 0;
        unsigned code_bits = 0;

        void put(std::uint32_t code);
        void put_last_bits();
    };

    void clear_table();
    void encode_piece(std::span<const std::uint8_t> indices);
    /// Writes code bytes as full sub-blocks, and with `all` also what does not fill one.
    [[nodiscard]] bool write_sub_blocks(bool all);

    vSTREAM& out_;
    vBUFFER<slot> slots_;
    vBUFFER<std::uint8_t> bytes_; ///< of codes, up to where the packer stands
    std::array<std::uint32_t, gif_most_literals> scatter_{}; ///< where the strings with a last pixel start
    gif_code_layout layout_;
    code_packer packer_;
    std::uint32_t next_free_ = 0;
    std::uint32_t prefix_ = no_prefix;
};

} // namespace klv
