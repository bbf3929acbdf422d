#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace klv::imaging {

/// How the samples of a row are stored.
struct sample_format {
    enum class number : std::uint8_t { natural, integer, real };

    unsigned bits = 8;
    number kind = number::natural;
    /// Samples are numbers of a palette or of a table of greys and keep their value; others are scaled from
    /// their range (0 to 1 for real numbers) to 0 to 255.
    bool indices = false;
};

/// Whether unpack_samples knows the format.
[[nodiscard]] bool unpackable(const sample_format& format);

/// Samples as they lie in a row (most significant bit first; 16 and more bits in the byte order of the
/// machine, other depths above 8 as bit strings) as one byte each. Missing samples are left as they are.
void unpack_samples(
    std::span<const std::uint8_t> row, const sample_format& format, std::span<std::uint8_t> samples);

} // namespace klv::imaging
