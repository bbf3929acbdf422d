#pragma once

#include "klv/attributes/fill_spec.h"
#include "klv/base/types.h"

#include <cstdint>

// The attributes that a Windows Metafile's numbers stand for.

namespace klv {

/// The palette flags in the highest byte play no part.
inline vCOLOUR wmf_colour(COLORREF colour)
{
    return vCOLOUR(static_cast<std::int32_t>(colour & 0xFFFFFF), 0);
}

inline vFILLSPEC wmf_solid_fill(const vCOLOUR& colour, vFILLMODE mode = vFILL_ALTERNATE)
{
    return vFILLSPEC(vFILL_SOLID, colour, colour, vANGLE(), mode, vPOINT(0, 0));
}

} // namespace klv
