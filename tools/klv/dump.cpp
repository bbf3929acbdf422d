#include "klv/metafiles/record_cursor.h"
#include "klv/metafiles/record_text.h"

#include "tools/klv/commands.h"
#include "tools/klv/failure.h"
#include "tools/klv/input.h"

#include <cstdio>

namespace klv::tool {
namespace {

void dump_one(const std::string& file)
{
    const document opened = open_input(file);
    if (!opened.picture)
        throw failure("is an image, which has no records");
    std::printf("%s: %s\n", file.c_str(), opened.description());
    std::uint32_t number = 0;
    record_line line;
    for_each_record(*opened.picture, [&](const metafile_record& record) {
        line.clear();
        describe(record, line);
        std::printf("%6u  %s\n", ++number, line.c_str());
    });
    if (!opened.warning.Null())
        print_warning(file, opened.warning());
}

} // namespace

int dump(const std::vector<std::string>& files)
{
    int status = 0;
    for (const auto& file : files) {
        const std::string reason = reason_of_failure([&] { dump_one(file); });
        if (!reason.empty()) {
            print_failure(file, reason);
            status = 1;
        }
    }
    return status;
}

} // namespace klv::tool
