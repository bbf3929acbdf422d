#include "tools/klv/failure.h"

#include "klv/filters/bitmap_filter.h"
#include "klv/filters/raster/imaging_library.h"

#include <cstdio>

namespace klv::tool {

std::string reason_of(oFILTER_STATUS status)
{
    if (status != oFILTER_FAILED)
        return describe(status);
    switch (oBMFILTER::MissingLibrary()) {
    case missing_library::imaging_module:
        return "the imaging module is missing: libklv_imaging.so belongs beside klv; build its target "
               "klv_imaging or run ./run";
    case missing_library::format_library:
        return "the imaging module needs GraphicsMagick for this format: apt-get install "
               "libgraphicsmagick-q16-3";
    case missing_library::none:
        break;
    }
    return describe(status);
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
