#pragma once

#include "klv/base/types.h"

#include <cstdint>

namespace klv {

/// What a host calls that notifies its libraries: records the library's instance, loads the texts of the
/// default exception and reads the user's settings "TraceLevel" and "CheckHeap" anew, whatever the reason.
/// Nothing needs it: each of these is there when it is first used. \return 1
int DllMain(HINSTANCE instance, std::uint32_t reason, void* reserved) noexcept;

/// The exit procedure of older platforms. \return 1
int WEP(int reason) noexcept;

} // namespace klv
