#pragma once

#include "klv/filters/filter.h"
#include "klv/rendering/render_status.h"

namespace klv {

/// What a filter answered, as a status of this room; FAILED of a raster format may mean that a module is
/// missing.
render_status status_of(const oFILTER& filter, oFILTER_STATUS answer) noexcept;

} // namespace klv
