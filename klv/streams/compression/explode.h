#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace klv {

/// Where a decompression stands.
enum class explode_state {
    more, ///< the output is full, the data goes on
    complete, ///< the end code has been read
    damaged, ///< the data ends early or is not imploded data
};

/// Decompresses data of the implode method of the Data Compression Library: both literal modes and all three
/// dictionary sizes, as published by Ben Rudiak-Gould (comp.compression, 13 August 2001). Total on arbitrary
/// bytes.
class exploder {
public:
    /// The greatest distance a copy reaches back.
    static constexpr std::size_t window_size = 4096;

    explicit exploder(std::span<const std::uint8_t> data) noexcept;

    /// Decodes into output from index from on, up to its end; output[0, from) holds the end of what was
    /// decoded before (all of it, or at least window_size bytes). \return the index after the last byte.
    std::size_t decode(std::span<std::uint8_t> output, std::size_t from) noexcept;

    explode_state state() const noexcept { return state_; }

private:
    const std::uint8_t* next_;
    const std::uint8_t* end_;
    std::uint64_t bits_ = 0;
    unsigned bit_count_ = 0;
    std::uint64_t produced_ = 0;
    unsigned low_distance_bits_ = 0;
    bool coded_literals_ = false;
    std::uint32_t pending_length_ = 0; // the rest of a copy that the output was too short for
    std::uint32_t pending_distance_ = 0;
    explode_state state_ = explode_state::more;
};

struct exploded {
    std::size_t size; ///< bytes written
    explode_state state;
};

/// Decompresses data into output, never past its end.
exploded explode(std::span<const std::uint8_t> data, std::span<std::uint8_t> output) noexcept;

} // namespace klv
