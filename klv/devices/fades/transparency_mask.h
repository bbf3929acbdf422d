#pragma once

#include "klv/base/types.h"

namespace klv {

/// Makes a monochrome bitmap of the size of a bottom-up DIB section whose bits are set where the pixels have
/// the key colour. In palette bitmaps the key is looked up in the colour table of the section selected into
/// dc; where it is not found, the last entry stands for it. Rows of 1 bit are taken as they are.
/// \return the mask, which the caller deletes; null when memory is out or the depth is none of a bitmap
HBITMAP CreateMaskFromDibSection(HDC dc, const BITMAPINFO* info, const void* bits, COLORREF key) noexcept;

} // namespace klv
