#pragma once

#include "klv/attributes/fill_spec.h"
#include "klv/attributes/line_spec.h"
#include "klv/base/types.h"

/// The attributes of a picture that those of the Windows formats stand for.
namespace klv {

/// The palette flags in the highest byte play no part.
inline vCOLOUR colour_of(COLORREF colour) { return vCOLOUR(static_cast<std::int32_t>(colour & 0xFFFFFF), 0); }

inline vFILLSPEC solid_fill(const vCOLOUR& colour, vFILLMODE mode = vFILL_ALTERNATE)
{
    return vFILLSPEC(vFILL_SOLID, colour, colour, vANGLE(), mode, vPOINT(0, 0));
}

/// The width in picture units; the corners and ends of metafile pens are round.
inline vLINESPEC round_line(vLINETYPE type, COLORREF colour, int width)
{
    return vLINESPEC(type, colour_of(colour), width, vCORNER_ROUND, vDASH_ROUND, nullptr, vLINESPEC::no_arrow,
        vLINESPEC::no_arrow);
}

} // namespace klv
