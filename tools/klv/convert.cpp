#include <filesystem>

#include "tools/klv/commands.h"
#include "tools/klv/failure.h"
#include "tools/klv/interrupt.h"
#include "tools/klv/progress_bar.h"
#include "tools/klv/sink.h"
#include "tools/klv/source.h"

namespace klv::tool {
namespace {

constexpr const char* recorded_picture = "VMM";

void convert_one(
    const std::string& in, const std::string& out, const std::string& format, const render_options& how)
{
    source opened = open_source(in);
    if (opened.picture && format == recorded_picture) {
        write_picture(*opened.picture, out);
    } else if (opened.picture) {
        progress_bar progress("drawing " + in);
        opened.picture->SetProgressInd(&progress);
        const auto bitmap = render(*opened.picture, how);
        opened.picture->RemoveProgressInd();
        write_bitmap(*bitmap, format, out);
    } else if (format == recorded_picture) {
        throw failure("is an image; klv turns only pictures into recorded pictures");
    } else {
        write_bitmap(*opened.bitmap, format, out);
    }
    if (!opened.warning.empty())
        print_warning(in, opened.warning);
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
    const bool into_directory = std::filesystem::is_directory(options.output);
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
        try {
            convert_one(in, out, format, options.render);
        } catch (const failure& why) {
            print_failure(in, why.what());
            status = 1;
        }
        if (interrupted())
            return 1;
    }
    return status;
}

} // namespace klv::tool
