#pragma once

#include <atomic>
#include <cstdint>

namespace klv {

/// A block of bytes that several memory streams refer to: their own, freed with the last of them, or a
/// caller's, whose pointer is handed back through its slot.
class shared_bytes {
public:
    /// A block of at least capacity bytes. \return null when memory is out.
    static shared_bytes* make(std::uint32_t capacity) noexcept;
    /// Refers to the caller's block of capacity bytes at *slot. \return null when memory is out.
    static shared_bytes* borrow(std::uint8_t** slot, std::uint32_t capacity, bool growable) noexcept;

    shared_bytes(const shared_bytes&) = delete;
    shared_bytes& operator=(const shared_bytes&) = delete;

    void add_reference() noexcept { ++references_; }
    void release() noexcept;

    std::uint8_t* data() noexcept { return data_; }
    bool borrowed() const noexcept { return slot_ != nullptr; }

    /// Makes room for capacity bytes; the block may move. Grows in proportion to what is there, so that
    /// many small steps cost little.
    bool reserve(std::uint32_t capacity) noexcept;

private:
    shared_bytes() = default;
    ~shared_bytes() = default;

    std::uint8_t* data_ = nullptr;
    std::uint32_t allocated_ = 0;
    std::atomic<std::uint32_t> references_ = 1;
    std::uint8_t** slot_ = nullptr;
    bool growable_ = true;
};

} // namespace klv
