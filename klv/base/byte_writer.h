#pragma once

#include "klv/base/byte_order.h"

#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <span>
#include <string_view>
#include <vector>

namespace klv {

/// Builds bytes that go into a file: the companion of byte_reader. Grows as needed from the given memory
/// resource; out of memory is std::bad_alloc, which the public operation above answers.
class byte_writer {
public:
    explicit byte_writer(std::pmr::memory_resource* memory = std::pmr::get_default_resource())
        : bytes_(memory)
    {
    }

    [[nodiscard]] std::pmr::memory_resource* memory() const { return bytes_.get_allocator().resource(); }
    [[nodiscard]] std::size_t size() const { return bytes_.size(); }
    [[nodiscard]] bool empty() const { return bytes_.empty(); }
    [[nodiscard]] const std::uint8_t* data() const { return bytes_.data(); }
    [[nodiscard]] std::span<const std::uint8_t> span() const { return bytes_; }
    [[nodiscard]] std::span<std::uint8_t> span() { return bytes_; }
    void reserve(std::size_t size) { bytes_.reserve(size); }
    void clear() { bytes_.clear(); }

    void u8(std::uint8_t value) { bytes_.push_back(value); }
    void i8(std::int8_t value) { u8(static_cast<std::uint8_t>(value)); }
    void u16le(std::uint16_t value) { store_le<2>(grow(2), value); }
    void u32le(std::uint32_t value) { store_le<4>(grow(4), value); }
    void i16le(std::int16_t value) { u16le(static_cast<std::uint16_t>(value)); }
    void i32le(std::int32_t value) { u32le(static_cast<std::uint32_t>(value)); }
    void u16be(std::uint16_t value) { store_be<2>(grow(2), value); }
    void u32be(std::uint32_t value) { store_be<4>(grow(4), value); }
    void i16be(std::int16_t value) { u16be(static_cast<std::uint16_t>(value)); }
    void i32be(std::int32_t value) { u32be(static_cast<std::uint32_t>(value)); }

    void bytes(std::span<const std::uint8_t> data) { bytes_.insert(bytes_.end(), data.begin(), data.end()); }
    /// The characters without a terminator.
    void text(std::string_view characters)
    {
        bytes_.insert(bytes_.end(), characters.begin(), characters.end());
    }
    void fill(std::size_t count, std::uint8_t value = 0) { bytes_.insert(bytes_.end(), count, value); }
    /// Fills with zeros up to the next multiple of step.
    void align(std::size_t step) { fill((step - size() % step) % step); }

private:
    std::uint8_t* grow(std::size_t count)
    {
        bytes_.resize(bytes_.size() + count);
        return bytes_.data() + (bytes_.size() - count);
    }

    std::pmr::vector<std::uint8_t> bytes_;
};

} // namespace klv
