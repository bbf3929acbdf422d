#include "klv/core/progress.h"

#include "klv/platform/host.h"
#include "klv/platform/system/tick_count.h"

namespace klv {

namespace {
constexpr std::uint32_t default_tick_increment = 125; // milliseconds
}

void oPROGRESS::oFullScale(std::uint32_t full_scale) { full_scale_ = full_scale; }

void oPROGRESS::oIncrement(std::uint32_t n)
{
    progress_ += n;
    report(progress_);
}

void oPROGRESS::oSet(std::uint32_t value) { report(value); }

void oPROGRESS::oStart()
{
    last_report_ = GetTickCount();
    tick_increment_ = default_tick_increment;
    progress_ = 0;
}

void oPROGRESS::oTerminate() { }

int oPROGRESS::OutOfMemory() { return 0; }

int oPROGRESS::Stop() { return escape_pressed(); }

void oPROGRESS::oUpdate(std::uint32_t value) { progress_ = value; }

// Tick counts wrap; the difference does not mind.
void oPROGRESS::report(std::uint32_t value)
{
    const std::uint32_t now = GetTickCount();
    if (now - last_report_ <= tick_increment_)
        return;
    oUpdate(value);
    last_report_ = now;
}

} // namespace klv
