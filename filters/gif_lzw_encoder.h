#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "core/buffer.h"
#include "filters/gif_lzw.h"

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
    /// A string: the code of its prefix, its last pixel, and its own code in one number; see slot_of.
    using slot = std::uint32_t;
    static constexpr slot empty_slot = 0xFFFFFFFF;
    static constexpr unsigned slot_bits = 13;
    static constexpr std::uint32_t no_prefix = 0xFFFFFFFF;
    static constexpr std::size_t sub_block_size = 254;
    static constexpr std::size_t gathered_blocks = 16;

    void clear_table();
    void put_code(std::uint32_t code);
    [[nodiscard]] bool write_sub_blocks(std::size_t least);

    vSTREAM& out_;
    vBUFFER<slot> slots_;
    vBUFFER<std::uint8_t> bytes_; ///< code bytes that wait to be written
    std::size_t filled_ = 0;
    gif_code_layout layout_;
    std::uint64_t bits_ = 0; ///< below bit_count_ bits that are not in bytes_ yet
    unsigned bit_count_ = 0;
    unsigned code_bits_ = 0;
    std::uint32_t next_free_ = 0;
    std::uint32_t prefix_ = no_prefix;
};

} // namespace klv
