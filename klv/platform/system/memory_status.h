#pragma once

#include <cstdint>

namespace klv {

/// Memory of the machine, in bytes.
struct MEMORYSTATUS {
    std::uint64_t dwTotalPhys;
    std::uint64_t dwAvailPhys;
    std::uint64_t dwTotalPageFile; ///< swap space
    std::uint64_t dwAvailPageFile;
};

/// All fields are 0 where the system does not tell.
void GlobalMemoryStatus(MEMORYSTATUS* status) noexcept;

} // namespace klv
