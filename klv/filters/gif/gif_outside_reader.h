#pragma once

#include "klv/filters/filter.h"

namespace klv {

class oDIB;
class vSTREAM;

/// Reads a GIF file by the optional module IEPICIMP.DLL, whose function ImportGIF is given the stream's name
/// and answers a global memory handle with a packed bitmap (info header, colour table, bottom-up rows), or
/// null. The stream is closed meanwhile. oFILTER_FAILED, and the bitmap as it was, without module or handle.
oFILTER_STATUS read_gif_outside(vSTREAM& in, oDIB& bitmap) noexcept;

} // namespace klv
