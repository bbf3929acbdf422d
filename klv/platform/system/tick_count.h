#pragma once

#include "klv/base/types.h"

namespace klv {

/// Milliseconds of a clock that never goes back; starts again at 0 after 49.7 days.
[[nodiscard]] DWORD GetTickCount() noexcept;

/// For tests: makes GetTickCount answer what now answers; null restores the clock.
void set_tick_source(DWORD (*now)()) noexcept;

} // namespace klv
