#pragma once

#include "klv/base/types.h"

#include <cstdint>
#include <span>

namespace klv::gdi {

/// A ternary raster operation: bit 4 P + 2 S + D of the table is the result for those bits of pattern,
/// source and destination.
class rop3 {
public:
    explicit rop3(DWORD code)
        : table_(static_cast<std::uint8_t>(code >> 16 & 0xFF))
    {
    }

    [[nodiscard]] bool uses_pattern() const { return (table_ >> 4) != (table_ & 0x0F); }
    [[nodiscard]] bool uses_source() const { return (table_ >> 2 & 0x33) != (table_ & 0x33); }
    [[nodiscard]] bool is_source_copy() const { return table_ == 0xCC; }
    /// The mix mode (R2_BLACK to R2_WHITE) of an operation without source.
    [[nodiscard]] INT to_rop2() const;

    /// d = operation(p, s, d) for every number. Spans that the operation does not use may be empty.
    void combine(
        std::span<std::uint32_t> d, std::span<const std::uint32_t> s, std::span<const std::uint32_t> p) const;

private:
    std::uint8_t table_;
};

} // namespace klv::gdi
