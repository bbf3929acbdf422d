#include "klv/filters/gif/gif_lzw_encoder.h"

#include "klv/streams/stream.h"

#include <algorithm>

// The strings of the table stand in an open-addressed hash table of prefix code and last pixel, one number a
// slot, so that a pixel mostly costs one probe and clearing is one fill.
namespace klv {

namespace {

constexpr std::uint32_t code_mask = gif_code_count - 1;

/// What tells a string, in the upper bits of a slot.
constexpr std::uint32_t string_of(std::uint32_t pixel, std::uint32_t prefix)
{
    return (pixel << gif_most_code_bits | prefix) << gif_most_code_bits;
}

/// Strings with the same last pixel often have prefixes in a row, and lie in a row then. A probe leaves such
/// rows behind in one step, which is odd so that it comes to every slot.
constexpr std::uint32_t probe_step = 2531;

} // namespace

void gif_lzw_encoder::code_packer::put(std::uint32_t code)
{
    constexpr unsigned stored_bits = 32;
    bits |= std::uint64_t{code} << bit_count;
    bit_count += code_bits;
    if (bit_count >= stored_bits) {
        for (unsigned shift = 0; shift < stored_bits; shift += 8)
            *to++ = static_cast<std::uint8_t>(bits >> shift & 0xFF);
        bits >>= stored_bits;
        bit_count -= stored_bits;
    }
}

void gif_lzw_encoder::code_packer::put_last_bits()
{
    for (unsigned shift = 0; shift < bit_count; shift += 8)
        *to++ = static_cast<std::uint8_t>(bits >> shift & 0xFF);
    bit_count = 0;
}

bool gif_lzw_encoder::start(unsigned literal_bits) noexcept
{
    if (!slots_.resize(std::size_t{1} << slot_bits)
        || !bytes_.resize_uninitialized(gathered_bytes + most_bytes_of_piece))
        return false;
    layout_ = {literal_bits};
    for (std::uint32_t pixel = 0; pixel < gif_most_literals; ++pixel)
        scatter_[pixel] = (pixel * 2654435761U) >> (32 - slot_bits); // Knuth's multiplicative hash
    clear_table();
    packer_ = {.to = bytes_.data(), .code_bits = layout_.first_code_bits()};
    packer_.put(layout_.clear());
    return true;
}

void gif_lzw_encoder::clear_table()
{
    std::ranges::fill(slots_.span(), empty_slot);
    next_free_ = layout_.first_free();
}

bool gif_lzw_encoder::write_sub_blocks(bool all)
{
    const auto filled = static_cast<std::size_t>(packer_.to - bytes_.data());
    std::array<std::uint8_t, 1 + sub_block_size> block{};
    std::size_t at = 0;
    while (filled - at >= (all ? 1 : sub_block_size)) {
        const std::size_t length = std::min(filled - at, sub_block_size);
        block[0] = static_cast<std::uint8_t>(length);
        std::copy_n(bytes_.data() + at, length, block.begin() + 1);
        const auto size = static_cast<std::uint32_t>(length + 1);
        if (out_.WritePlain(block.data(), size) != size)
            return false;
        at += length;
    }
    packer_.to = std::copy(bytes_.data() + at, bytes_.data() + filled, bytes_.data());
    return true;
}

void gif_lzw_encoder::encode_piece(std::span<const std::uint8_t> indices)
{
    constexpr std::uint32_t slot_mask = (1U << slot_bits) - 1;
    slot* const slots = slots_.data();
    code_packer packer = packer_;
    std::uint32_t prefix = prefix_;
    std::uint32_t next_free = next_free_;
    for (const std::uint32_t pixel : indices) {
        const std::uint32_t string = string_of(pixel, prefix);
        std::uint32_t at = scatter_[pixel] ^ prefix;
        slot found = slots[at];
        while ((found & ~code_mask) != string && found != empty_slot) {
            at = (at + probe_step) & slot_mask;
            found = slots[at];
        }
        if (found != empty_slot) {
            prefix = found & code_mask;
            continue;
        }
        packer.put(prefix);
        prefix = pixel;
        if (next_free > (1U << packer.code_bits) - 1 && packer.code_bits < gif_most_code_bits)
            ++packer.code_bits;
        if (next_free < gif_code_count) {
            slots[at] = string | next_free++;
        } else {
            packer.put(layout_.clear());
            packer.code_bits = layout_.first_code_bits();
            clear_table();
            next_free = next_free_;
        }
    }
    packer_ = packer;
    prefix_ = prefix;
    next_free_ = next_free;
}

bool gif_lzw_encoder::encode(std::span<const std::uint8_t> indices) noexcept
{
    if (prefix_ == no_prefix && !indices.empty()) {
        prefix_ = indices.front();
        indices = indices.subspan(1);
    }
    while (!indices.empty()) {
        const std::size_t length = std::min(indices.size(), piece_pixels);
        encode_piece(indices.first(length));
        indices = indices.subspan(length);
        if (packer_.to - bytes_.data() >= static_cast<std::ptrdiff_t>(gathered_bytes)
            && !write_sub_blocks(false))
            return false;
    }
    return true;
}

bool gif_lzw_encoder::finish() noexcept
{
    if (prefix_ != no_prefix) {
        packer_.put(prefix_);
        if (next_free_ > (1U << packer_.code_bits) - 1 && packer_.code_bits < gif_most_code_bits)
            ++packer_.code_bits;
    }
    packer_.put(layout_.end());
    packer_.put_last_bits();
    constexpr std::uint8_t terminator = 0;
    return write_sub_blocks(true) && out_.WritePlain(&terminator, 1) == 1;
}

} // namespace klv
