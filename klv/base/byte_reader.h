#pragma once

#include "klv/base/byte_order.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace klv {

/// The one way in for bytes that come from a file. Every read is checked; a read that runs out answers 0
/// and leaves the reader in the "ran out" state, which sticks. The reader does not own the bytes.
class byte_reader {
public:
    byte_reader() = default;
    explicit byte_reader(std::span<const std::uint8_t> bytes)
        : bytes_(bytes)
    {
    }

    [[nodiscard]] std::size_t size() const { return bytes_.size(); }
    [[nodiscard]] std::size_t position() const { return at_; }
    [[nodiscard]] std::size_t left() const { return bytes_.size() - at_; }
    [[nodiscard]] bool ok() const { return !ran_out_; }
    [[nodiscard]] bool at_end() const { return at_ == bytes_.size(); }

    /// True when count items of item_size bytes are still there. Ask before allocating for them.
    [[nodiscard]] bool holds(std::size_t count, std::size_t item_size = 1) const
    {
        return item_size == 0 || count <= left() / item_size;
    }

    /// Moves to an absolute offset; past the end is "ran out" and moves to the end.
    void seek(std::size_t offset)
    {
        if (offset > bytes_.size())
            ran_out_ = true;
        at_ = std::min(offset, bytes_.size());
    }
    void skip(std::size_t count) { (void)bytes(count); }

    std::uint8_t u8() { return static_cast<std::uint8_t>(little<1>()); }
    std::int8_t i8() { return static_cast<std::int8_t>(u8()); }
    std::uint16_t u16le() { return static_cast<std::uint16_t>(little<2>()); }
    std::uint32_t u32le() { return little<4>(); }
    std::int16_t i16le() { return static_cast<std::int16_t>(u16le()); }
    std::int32_t i32le() { return static_cast<std::int32_t>(u32le()); }
    std::uint16_t u16be() { return static_cast<std::uint16_t>(big<2>()); }
    std::uint32_t u32be() { return big<4>(); }
    std::int16_t i16be() { return static_cast<std::int16_t>(u16be()); }
    std::int32_t i32be() { return static_cast<std::int32_t>(u32be()); }

    /// The next count bytes in place; empty and "ran out" when fewer are left.
    std::span<const std::uint8_t> bytes(std::size_t count)
    {
        if (count > left()) {
            ran_out_ = true;
            at_ = bytes_.size();
            return {};
        }
        const auto part = bytes_.subspan(at_, count);
        at_ += count;
        return part;
    }
    /// Everything that is left.
    std::span<const std::uint8_t> rest() { return bytes(left()); }
    /// A reader over the next count bytes, which this one passes over.
    byte_reader sub(std::size_t count) { return byte_reader(bytes(count)); }

private:
    template <std::size_t Width> std::uint32_t little()
    {
        const auto b = bytes(Width);
        return b.empty() ? 0 : load_le<Width>(b.data());
    }
    template <std::size_t Width> std::uint32_t big()
    {
        const auto b = bytes(Width);
        return b.empty() ? 0 : load_be<Width>(b.data());
    }

    std::span<const std::uint8_t> bytes_;
    std::size_t at_ = 0;
    bool ran_out_ = false;
};

} // namespace klv
