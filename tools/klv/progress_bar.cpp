#include "tools/klv/progress_bar.h"

#include "tools/klv/interrupt.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include <unistd.h>

namespace klv::tool {

namespace {
constexpr int bar_width = 30;
}

progress_bar::progress_bar(std::string label)
    : label_(std::move(label))
    , on_terminal_(isatty(STDERR_FILENO) != 0)
{
}

void progress_bar::oUpdate(std::uint32_t value)
{
    oPROGRESS::oUpdate(value);
    if (!on_terminal_ || FullScale() == 0)
        return;
    const double part = std::min(1.0, static_cast<double>(value) / FullScale());
    const int filled = static_cast<int>(part * bar_width);
    const std::string bar = std::string(static_cast<std::size_t>(filled), '#')
        + std::string(static_cast<std::size_t>(bar_width - filled), '.');
    std::fprintf(stderr, "\r%s [%s] %3d %%", label_.c_str(), bar.c_str(), static_cast<int>(part * 100));
    std::fflush(stderr);
    shown_ = true;
}

int progress_bar::Stop() { return interrupted() || oPROGRESS::Stop(); }

void progress_bar::clear()
{
    if (shown_)
        std::fprintf(stderr, "\r\033[K");
    shown_ = false;
}

} // namespace klv::tool
