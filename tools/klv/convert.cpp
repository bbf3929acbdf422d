#include "tools/klv/commands.h"
#include "tools/klv/failure.h"
#include "tools/klv/input.h"
#include "tools/klv/interrupt.h"
#include "tools/klv/output.h"

#include <cctype>
#include <filesystem>
#include <string>
#include <system_error>

namespace klv::tool {
namespace {

void convert_one(
    const std::string& in, const std::string& out, const std::string& format, const convert_options& options)
{
    document opened = open_input(in, options.resolution);
    const output_options how{format, options.depth, in, options.render};
    if (opened.picture)
        write_output(*opened.picture, out, how);
    else
        write_output(*opened.bitmap, out, how);
    if (!opened.warning.Null())
        print_warning(in, opened.warning());
}

std::string format_of(const convert_options& options)
{
    if (!options.format.empty())
        return extension_of("." + options.format);
    return options.output == "-" ? "PNG" : extension_of(options.output);
}

std::filesystem::path name_in_directory(
    const std::string& in, const std::string& directory, std::string extension)
{
    for (char& c : extension)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    auto name = std::filesystem::path(in == "-" ? "standard-input" : in).filename();
    return std::filesystem::path(directory) / name.replace_extension(extension);
}

} // namespace

int convert(const convert_options& options)
{
    std::error_code unreadable;
    const bool into_directory = std::filesystem::is_directory(options.output, unreadable);
    if (!into_directory && options.inputs.size() > 1) {
        print_failure(options.output, "is no directory, which several inputs need");
        return 1;
    }
    std::string format = format_of(options);
    if (into_directory && options.format.empty())
        format = "PNG";
    if (format.empty()) {
        print_failure(options.output, "has no extension that says which format to write; use --format");
        return 1;
    }

    int status = 0;
    for (const auto& in : options.inputs) {
        const std::string out
            = into_directory ? name_in_directory(in, options.output, format).string() : options.output;
        const std::string reason = reason_of_failure([&] { convert_one(in, out, format, options); });
        if (!reason.empty()) {
            print_failure(in, reason);
            status = 1;
        }
        if (interrupted())
            return 1;
    }
    return status;
}

} // namespace klv::tool
