#pragma once

#include "klv/base/types.h"

#include <cstdint>

namespace klv {

/// What the platform calls when the library is loaded and unloaded: records the library's instance, loads
/// the texts of the default exception and reads the user's settings "TraceLevel" and "CheckHeap", whatever
/// the reason. \return 1
int DllMain(HINSTANCE instance, std::uint32_t reason, void* reserved) noexcept;

/// The exit procedure of older platforms. \return 1
int WEP(int reason) noexcept;

} // namespace klv
