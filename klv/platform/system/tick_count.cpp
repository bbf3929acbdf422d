#include "klv/platform/system/tick_count.h"

#include <atomic>
#include <chrono>

namespace klv {

namespace {

std::atomic<DWORD (*)()> tick_source = nullptr;

} // namespace

DWORD GetTickCount() noexcept
{
    if (const auto source = tick_source.load())
        return source();
    using namespace std::chrono;
    const auto now = steady_clock::now().time_since_epoch();
    return static_cast<DWORD>(static_cast<std::uint64_t>(duration_cast<milliseconds>(now).count()));
}

void set_tick_source(DWORD (*now)()) noexcept { tick_source = now; }

} // namespace klv
