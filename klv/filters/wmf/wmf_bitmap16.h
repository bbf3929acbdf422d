#pragma once

#include "klv/base/byte_reader.h"
#include "klv/base/types.h"
#include "klv/bitmaps/memory_dib.h"

#include <memory>

namespace klv {

/// A device-dependent bitmap of a record. Its single-bit form takes the text and background colour. Null when
/// there is none that can be read.
std::unique_ptr<oMEMDIB> read_wmf_bitmap16(byte_reader& in, COLORREF text_colour, COLORREF background);

} // namespace klv
