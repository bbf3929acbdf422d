#include "tools/klv/bitmap_picture.h"
#include "tools/klv/commands.h"
#include "tools/klv/failure.h"
#include "tools/klv/interrupt.h"
#include "tools/klv/progress_bar.h"
#include "tools/klv/sink.h"
#include "tools/klv/source.h"

#include <filesystem>
#include <system_error>

namespace klv::tool {
namespace {

constexpr const char* recorded_picture = "VMM";

// Draws a picture, unless it just holds a bitmap that is wanted as it is.
std::unique_ptr<oMEMDIB> pixels_of(vMETAFILE& picture, const std::string& in, const convert_options& options)
{
    if (options.default_size)
        if (auto held = held_bitmap(picture))
            return held;
    progress_bar progress("drawing " + in);
    picture.SetProgressInd(&progress);
    auto drawn = render(picture, options.render);
    picture.RemoveProgressInd();
    return drawn;
}

void convert_one(
    const std::string& in, const std::string& out, const std::string& format, const convert_options& options)
{
    source opened = open_source(in, options.resolution);
    if (format == recorded_picture) {
        if (opened.picture)
            write_picture(*opened.picture, out);
        else
            write_picture_of(*opened.bitmap, out);
    } else {
        if (opened.picture)
            opened.bitmap = pixels_of(*opened.picture, in, options);
        write_bitmap(*opened.bitmap, format, out, options.depth);
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
