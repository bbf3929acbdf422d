#pragma once

#include "klv/filters/filter.h"

/// Writing GIF files.
namespace klv {

class oDIB;
class oPROGRESS;
class vSTREAM;

/// Writes the bitmap as a GIF87a file at the position of the stream. Bitmaps of more than 8 bits are reduced
/// to 256 colours first. oFILTER_UNSUPPORTED for sides that 16 bits can't say, oFILTER_NO_MEMORY,
/// oFILTER_WRITE_ERROR, oFILTER_CANCELLED, and oFILTER_FAILED for a bitmap without pixels.
oFILTER_STATUS write_gif(const oDIB& bitmap, vSTREAM& out, oPROGRESS* progress) noexcept;

} // namespace klv
