#include "tools/klv/failure.h"

#include <cstdio>

namespace klv::tool {

void print_failure(const std::string& file, const std::string& reason)
{
    std::fprintf(stderr, "klv: %s: %s\n", file.c_str(), reason.c_str());
}

void print_warning(const std::string& file, const std::string& reason)
{
    std::fprintf(stderr, "klv: %s: warning: %s\n", file.c_str(), reason.c_str());
}

} // namespace klv::tool
