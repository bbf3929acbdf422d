#pragma once

#include "klv/bitmaps/memory_dib.h"

#include <memory>

namespace klv {

class vDEVICE;
class vSTRING;

/// The text in the device's current font, upright, black on white, 1 bit deep: as wide as the text and a
/// pixel more, twice as high as a character, its baseline in the middle.
/// \return null when the text can't be drawn, or would take more than 1 MiB
std::unique_ptr<oMEMDIB> text_as_bitmap(vDEVICE& device, const vSTRING& text) noexcept;

} // namespace klv
