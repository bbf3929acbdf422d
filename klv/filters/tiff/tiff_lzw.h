#pragma once

#include "klv/filters/filter.h"
#include "klv/filters/tiff/tiff_source.h"

#include <array>
#include <cstdint>
#include <span>

namespace klv {

/// Decodes the LZW strips of a plane (Welch, 1984; TIFF 6.0, section 13): codes of 9 to 12 bits, the most
/// significant bit first, one bit longer as soon as the last code but one of a length is in the table.
class tiff_lzw_decoder {
public:
    /// A strip has to be shorter than this.
    static constexpr std::uint32_t strip_limit = 32768;

    /// Throws std::bad_alloc.
    explicit tiff_lzw_decoder(std::uint32_t longest_strip);

    /// Decodes a strip of size bytes at the cursor's position. BAD_DATA when the codes end before, READ_ERROR
    /// when the file does; strip() then is zero from there on.
    [[nodiscard]] oFILTER_STATUS decode_strip(tiff_cursor& in, std::uint32_t size);
    /// Bytes of the strip that were decoded.
    [[nodiscard]] std::uint32_t decoded() const noexcept { return decoded_; }
    /// The bytes of the strip decoded last.
    [[nodiscard]] std::span<std::uint8_t> strip() noexcept;

private:
    /// A string is a piece of what was written before it: a code costs no walk through prefixes.
    struct LZWCode {
        std::uint16_t start;
        std::uint16_t length;
    };

    static constexpr std::uint32_t literals = 256;

    [[nodiscard]] oFILTER_STATUS decode(tiff_cursor& in, std::uint32_t end, std::uint32_t& at);

    std::array<LZWCode, 4096> codes_;
    tiff_buffer text_; ///< the 256 literals, the strip, and room for the last copy to overshoot
    std::uint32_t size_ = 0;
    std::uint32_t decoded_ = 0;
};

} // namespace klv
