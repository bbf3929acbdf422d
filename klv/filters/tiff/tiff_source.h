#pragma once

#include "klv/base/memory.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace klv {

class vSTREAM;

using tiff_buffer = std::vector<std::uint8_t, vALLOCATOR<std::uint8_t>>;

/// A TIFF file in a stream: all positions count from the file's first byte. Bytes that the stream keeps in
/// memory are used in place; the stream must stay as it is meanwhile.
class tiff_source {
public:
    /// The file starts at the stream's position.
    explicit tiff_source(vSTREAM& stream) noexcept;

    /// Bytes from the file's start to the stream's end.
    [[nodiscard]] std::uint32_t size() const noexcept { return size_; }
    /// The whole file in place; empty when it is not in memory.
    [[nodiscard]] std::span<const std::uint8_t> in_memory() const noexcept { return in_memory_; }
    /// Exactly count bytes, read into the buffer where they are not in memory; empty when the file ends
    /// before them. Throws std::bad_alloc.
    [[nodiscard]] std::span<const std::uint8_t> bytes(
        std::uint32_t position, std::size_t count, tiff_buffer& buffer);
    /// Reads as many bytes as there are. \return their number
    std::size_t read(std::uint32_t position, std::span<std::uint8_t> to) noexcept;

private:
    vSTREAM& stream_;
    std::uint32_t start_;
    std::uint32_t size_;
    std::span<const std::uint8_t> in_memory_;
};

/// A place in a TIFF file from which bytes are taken one after another.
class tiff_cursor {
public:
    /// Bytes that ahead() can be asked for.
    static constexpr std::size_t longest_view = 16384;

    explicit tiff_cursor(tiff_source& source) noexcept
        : source_(&source)
    {
    }

    void seek(std::uint32_t position) noexcept;
    [[nodiscard]] std::uint32_t position() const noexcept
    {
        return read_to_ - static_cast<std::uint32_t>(window_.size());
    }
    /// The bytes that come next, at least `wanted` unless the file ends before. Throws std::bad_alloc.
    [[nodiscard]] std::span<const std::uint8_t> ahead(std::size_t wanted)
    {
        if (window_.size() < wanted)
            refill();
        return window_;
    }
    /// Passes over bytes that ahead() showed.
    void skip(std::size_t count) noexcept { window_ = window_.subspan(count); }
    /// Passes over what ahead() showed before that place.
    void skip_to(const std::uint8_t* place) noexcept
    {
        skip(static_cast<std::size_t>(place - window_.data()));
    }
    /// Fills `to`. \return false when the file ends before. Throws std::bad_alloc.
    [[nodiscard]] bool read(std::span<std::uint8_t> to);

private:
    void refill();

    tiff_source* source_;
    std::span<const std::uint8_t> window_; ///< of the file in memory, or of the buffer
    std::uint32_t read_to_ = 0; ///< file position where the window ends
    tiff_buffer buffer_;
};

/// The bits of a cursor, the most significant of each byte first. Nothing but inline members takes its
/// address, so that a decoder's own one lives in registers.
class tiff_bits {
public:
    /// Bits that peek() can be asked for.
    static constexpr unsigned longest_code = 32;

    explicit tiff_bits(tiff_cursor& in) noexcept
        : in_(&in)
    {
    }

    /// The next count (1 to longest_code) bits; zeros stand for what comes after the file's end.
    [[nodiscard]] std::uint32_t peek(unsigned count)
    {
        if (held_ < count)
            fill();
        return static_cast<std::uint32_t>(bits_ >> (64 - count));
    }
    /// Passes over bits that peek() showed.
    void drop(unsigned count) noexcept
    {
        ran_out_ |= count > held_;
        bits_ <<= count;
        held_ = count > held_ ? 0 : held_ - count;
    }
    [[nodiscard]] std::uint32_t take(unsigned count)
    {
        const std::uint32_t value = peek(count);
        drop(count);
        return value;
    }
    /// Goes on with the next whole byte.
    void align() noexcept { drop(held_ % 8); }
    /// False once bits after the file's end were taken.
    [[nodiscard]] bool ok() const noexcept { return !ran_out_; }
    /// Brings the cursor up to the bytes of which no bit was read.
    void move_cursor() const noexcept
    {
        if (next_)
            in_->skip_to(next_);
    }

private:
    void fill()
    {
        if (end_ - next_ < static_cast<std::ptrdiff_t>(sizeof(std::uint64_t))) {
            *this = refilled(*this);
            return;
        }
        std::uint64_t eight = 0;
        for (std::size_t i = 0; i < sizeof eight; ++i)
            eight = eight << 8 | next_[i];
        // Bits beyond the held ones may stay: the next filling brings the same.
        bits_ |= eight >> held_;
        const unsigned taken = (64 - held_) / 8;
        held_ += 8 * taken;
        next_ += taken;
    }
    [[nodiscard]] static tiff_bits refilled(tiff_bits bits);

    tiff_cursor* in_;
    const std::uint8_t* next_ = nullptr; ///< of the cursor's window
    const std::uint8_t* end_ = nullptr;
    std::uint64_t bits_ = 0; ///< the held bits at the top
    unsigned held_ = 0;
    bool ran_out_ = false;
};

} // namespace klv
