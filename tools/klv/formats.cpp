#include "klv/filters/filter_set.h"

#include "tools/klv/commands.h"

#include <cstdio>
#include <string>

namespace klv::tool {
namespace {

void print_format(const char* extension, const char* reads, const char* writes, const std::string& depths,
    std::string description)
{
    // Some of the names that the library shows carry blanks at their ends.
    description.erase(0, description.find_first_not_of(' '));
    std::printf("%-10s %-6s %-6s %-10s %s\n", extension, reads, writes, depths.c_str(), description.c_str());
}

std::string written_depths(const oFILTER& filter)
{
    std::string depths;
    for (const int bits : {1, 4, 8, 24})
        if (filter.Type() == oFILTER_BITMAP && filter.ExportColourDepths(bits))
            depths += (depths.empty() ? "" : " ") + std::to_string(bits);
    return depths.empty() ? "-" : depths;
}

} // namespace

int formats()
{
    print_format("extension", "reads", "writes", "bits", "format");
    print_format("VMM", "yes", "yes", "-", "Recorded picture");
    filter_set().for_each([](const oFILTER& filter) {
        print_format(filter.GetID()(), filter.DoesImport() ? "yes" : "no", filter.DoesExport() ? "yes" : "no",
            written_depths(filter), filter.GetDescription()());
    });
    return 0;
}

} // namespace klv::tool
