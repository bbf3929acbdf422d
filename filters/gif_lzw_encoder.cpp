#include "filters/gif_lzw_encoder.h"

#include "streams/stream.h"

#include <algorithm>
#include <array>

namespace klv {

namespace {

constexpr unsigned code_mask = gif_code_count - 1;
constexpr unsigned string_shift = gif_most_code_bits;

/// What tells a string, in the upper bits of a slot: its last pixel and the code of the rest.
constexpr std::uint32_t string_of(std::uint32_t pixel, std::uint32_t prefix)
{
    return (pixel << gif_most_code_bits | prefix) << string_shift;
}

} // namespace

bool gif_lzw_encoder::start(unsigned literal_bits) noexcept
{
    layout_ = {literal_bits};
    if (!slots_.resize(std::size_t{1} << slot_bits)
        || !bytes_.resize_uninitialized(gathered_blocks * sub_block_size + sizeof(std::uint64_t)))
        return false;
    code_bits_ = layout_.first_code_bits();
    clear_table();
    put_code(layout_.clear());
    return true;
}

void gif_lzw_encoder::clear_table()
{
    std::ranges::fill(slots_.span(), empty_slot);
    next_free_ = layout_.first_free();
}

void gif_lzw_encoder::put_code(std::uint32_t code)
{
    bits_ |= std::uint64_t{code} << bit_count_;
    bit_count_ += code_bits_;
    while (bit_count_ >= 8) {
        bytes_[filled_++] = static_cast<std::uint8_t>(bits_ & 0xFF);
        bits_ >>= 8;
        bit_count_ -= 8;
    }
    if (next_free_ > (1U << code_bits_) - 1 && code_bits_ < gif_most_code_bits)
        ++code_bits_;
}

bool gif_lzw_encoder::write_sub_blocks(std::size_t least)
{
    std::array<std::uint8_t, 1 + sub_block_size> block{};
    std::size_t at = 0;
    for (std::size_t left = filled_; left != 0 && left >= least; left = filled_ - at) {
        const std::size_t length = std::min(left, sub_block_size);
        block[0] = static_cast<std::uint8_t>(length);
        std::copy_n(bytes_.data() + at, length, block.begin() + 1);
        const auto size = static_cast<std::uint32_t>(length + 1);
        if (out_.WritePlain(block.data(), size) != size)
            return false;
        at += length;
    }
    std::copy(bytes_.data() + at, bytes_.data() + filled_, bytes_.data());
    filled_ -= at;
    return true;
}

bool gif_lzw_encoder::encode(std::span<const std::uint8_t> indices) noexcept
{
    if (indices.empty())
        return true;
    slot* const slots = slots_.data();
    constexpr std::uint32_t slot_mask = (1U << slot_bits) - 1;
    std::size_t i = 0;
    std::uint32_t prefix = prefix_;
    if (prefix == no_prefix)
        prefix = indices[i++];
    for (; i < indices.size(); ++i) {
        const std::uint32_t pixel = indices[i];
        const std::uint32_t string = string_of(pixel, prefix);
        std::uint32_t at = (pixel << 5 ^ prefix) & slot_mask;
        while (slots[at] != empty_slot && (slots[at] & ~code_mask) != string)
            at = (at + 1) & slot_mask;
        if (slots[at] != empty_slot) {
            prefix = slots[at] & code_mask;
            continue;
        }
        put_code(prefix);
        prefix = pixel;
        if (next_free_ < gif_code_count) {
            slots[at] = string | next_free_++;
        } else {
            clear_table();
            put_code(layout_.clear());
            code_bits_ = layout_.first_code_bits();
        }
        if (filled_ >= gathered_blocks * sub_block_size && !write_sub_blocks(sub_block_size))
            return false;
    }
    prefix_ = prefix;
    return true;
}

bool gif_lzw_encoder::finish() noexcept
{
    if (prefix_ != no_prefix)
        put_code(prefix_);
    put_code(layout_.end());
    if (bit_count_ != 0)
        bytes_[filled_++] = static_cast<std::uint8_t>(bits_ & 0xFF);
    constexpr std::uint8_t terminator = 0;
    return write_sub_blocks(1) && out_.WritePlain(&terminator, 1) == 1;
}

} // namespace klv
