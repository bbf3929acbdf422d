#pragma once

#include <cstdint>

namespace klv {

/// The pixel layout of a bitmap. The value decides depth and colour table of a new header (colour_layout).
enum oCOLOUR_MODEL : std::int32_t {
    oMODEL_RGB24 = 0,
    oMODEL_RGB24_SECOND = 1,
    oMODEL_RGB32 = 2,
    oMODEL_PALETTE1 = 3,
    oMODEL_PALETTE4 = 4,
    oMODEL_PALETTE8 = 5,
    oMODEL_PALETTE8_SECOND = 6,
    oMODEL_PALETTE8_THIRD = 7,
};

/// Bits per pixel and entries of the colour table that belong to a model.
struct colour_layout {
    std::uint16_t bits;
    std::uint32_t colours;
};

constexpr colour_layout layout_of(oCOLOUR_MODEL model)
{
    switch (model) {
    case oMODEL_RGB32:
        return {32, 0};
    case oMODEL_PALETTE1:
        return {1, 2};
    case oMODEL_PALETTE4:
        return {4, 16};
    case oMODEL_PALETTE8:
    case oMODEL_PALETTE8_SECOND:
    case oMODEL_PALETTE8_THIRD:
        return {8, 256};
    default:
        return {24, 0};
    }
}

/// The model of a stored bitmap; depths without a colour table of their own count as 24-bit.
constexpr oCOLOUR_MODEL model_of_bits(unsigned bits)
{
    switch (bits) {
    case 1:
        return oMODEL_PALETTE1;
    case 4:
        return oMODEL_PALETTE4;
    case 8:
        return oMODEL_PALETTE8;
    default:
        return oMODEL_RGB24;
    }
}

} // namespace klv
