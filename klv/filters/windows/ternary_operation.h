#pragma once

#include "klv/base/types.h"

#include <cstdint>

namespace klv {

/// Raster operations of three operands that metafiles use. The third byte tells the result for each
/// combination of pattern, source and target bits, P * 4 + S * 2 + D being the number of the bit.
enum class ternary_operation : std::uint32_t {
    blackness = 0x00000042,
    not_source_copy = 0x00330008,
    invert = 0x00550009,
    pattern_invert = 0x005A0049,
    source_invert = 0x00660046,
    source_and = 0x008800C6,
    no_operation = 0x00AA0029,
    merge_paint = 0x00BB0226,
    source_copy = 0x00CC0020,
    source_paint = 0x00EE0086,
    pattern_copy = 0x00F00021,
    whiteness = 0x00FF0062,
};

/// The colour that an operation makes of a pattern and a target, its source bits being 0.
[[nodiscard]] constexpr COLORREF result_without_source(
    ternary_operation operation, COLORREF pattern, COLORREF target)
{
    constexpr std::uint32_t channels = 0xFFFFFF;
    const auto when = [operation](int combination) {
        return (static_cast<std::uint32_t>(operation) >> (16 + combination) & 1) != 0 ? channels : 0;
    };
    return (when(0) & ~pattern & ~target & channels) | (when(1) & ~pattern & target)
        | (when(4) & pattern & ~target) | (when(5) & pattern & target);
}

} // namespace klv
