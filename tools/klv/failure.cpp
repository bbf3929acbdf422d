#include "tools/klv/failure.h"

#include <cstdio>

namespace klv::tool {

std::string reason_of(const render_status& status)
{
    switch (status.code()) {
    case render_code::missing_module:
        return "the imaging module is missing: libklv_imaging.so belongs beside klv; build its target "
               "klv_imaging or run ./run";
    case render_code::missing_library:
        return "the imaging module needs GraphicsMagick for this format: apt-get install "
               "libgraphicsmagick-q16-3";
    default:
        return status.words();
    }
}

void require(const render_status& status)
{
    if (!status.ok())
        throw failure(reason_of(status));
}

void print_failure(const std::string& file, const std::string& reason)
{
    std::fprintf(stderr, "klv: %s: %s\n", file.c_str(), reason.c_str());
}

void print_warning(const std::string& file, const std::string& reason)
{
    std::fprintf(stderr, "klv: %s: warning: %s\n", file.c_str(), reason.c_str());
}

} // namespace klv::tool
