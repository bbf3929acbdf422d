#include "klv/platform/system/memory_status.h"

#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <memory>

namespace klv {

void GlobalMemoryStatus(MEMORYSTATUS* status) noexcept
{
    if (!status)
        return;
    *status = {};
    const struct {
        const char* name;
        std::uint64_t* value;
    } fields[] = {
        {"MemTotal", &status->dwTotalPhys},
        {"MemAvailable", &status->dwAvailPhys},
        {"SwapTotal", &status->dwTotalPageFile},
        {"SwapFree", &status->dwAvailPageFile},
    };
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen("/proc/meminfo", "r"), std::fclose);
    char name[64];
    std::uint64_t kibibytes = 0;
    while (file && std::fscanf(file.get(), "%63[^:]: %" SCNu64 "%*[^\n] ", name, &kibibytes) == 2)
        for (const auto& field : fields)
            if (std::strcmp(name, field.name) == 0)
                *field.value = kibibytes * 1024;
}

} // namespace klv
