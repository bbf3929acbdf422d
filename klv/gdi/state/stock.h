#pragma once

#include "klv/gdi/state/bitmap_object.h"
#include "klv/gdi/state/objects.h"

namespace klv::gdi {

/// The object of GetStockObject's index, null for one that does not exist.
std::shared_ptr<gdi_object> stock_object(INT index);
/// What a fresh memory context draws on: one monochrome pixel.
std::shared_ptr<bitmap_object> stock_bitmap();

} // namespace klv::gdi
