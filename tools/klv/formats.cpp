#include <cstdio>
#include <string>

#include "filters/filter_list.h"
#include "tools/klv/commands.h"

namespace klv::tool {
namespace {

void print_format(const char* extension, const char* reads, const char* writes, std::string description)
{
    // Some of the names that the library shows carry blanks at their ends.
    description.erase(0, description.find_first_not_of(' '));
    std::printf("%-10s %-6s %-6s %s\n", extension, reads, writes, description.c_str());
}

} // namespace

int formats()
{
    std::printf("%-10s %-6s %-6s %s\n", "extension", "reads", "writes", "format");
    print_format("VMM", "yes", "yes", "Recorded picture");
    const oFILTERLIST filters;
    for (std::uint16_t i = 0; i < oFILTERLIST::GetNoItems(); ++i) {
        const oFILTER& filter = *filters[i];
        print_format(filter.GetID()(), filter.DoesImport() ? "yes" : "no", filter.DoesExport() ? "yes" : "no",
            filter.GetDescription()());
    }
    return 0;
}

} // namespace klv::tool
