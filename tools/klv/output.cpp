#include "tools/klv/output.h"

#include "klv/rendering/bitmap_picture.h"
#include "klv/rendering/output_file.h"
#include "klv/rendering/save.h"
#include "klv/streams/memory_stream.h"

#include "tools/klv/failure.h"
#include "tools/klv/progress_bar.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace klv::tool {
namespace {

void copy_to_standard_output(vMEMSTREAM& encoded)
{
    std::array<std::uint8_t, 1 << 16> chunk{};
    encoded.MoveFromStart(0);
    while (!encoded.AtEnd()) {
        const auto got = encoded.ReadPlain(chunk.data(), static_cast<std::uint32_t>(chunk.size()));
        if (got == 0 || std::fwrite(chunk.data(), 1, got, stdout) != got)
            throw failure(std::strerror(errno ? errno : EIO));
    }
    if (std::fflush(stdout) != 0)
        throw failure(std::strerror(errno));
}

[[noreturn]] void fail_to_write(const std::string& file, const render_status& why)
{
    switch (why.code()) {
    case render_code::cancelled:
        throw failure(why.words());
    case render_code::unwritable:
        throw failure(file == "-" ? "memory ran out" : "can't write all of " + file);
    default:
        throw failure("writing " + file + ": " + reason_of(why));
    }
}

// Opens the output and lets write fill it.
template <class Write> void fill(const std::string& file, Write write)
{
    if (file == "-") {
        vMEMSTREAM encoded;
        if (const render_status status = write(encoded); !status.ok())
            fail_to_write(file, status);
        copy_to_standard_output(encoded);
        return;
    }
    output_file out(file);
    const auto require_open = [&](const render_status& status) {
        if (!status.ok())
            throw failure("can't write " + file + ": " + status.words());
    };
    require_open(out.status());
    if (const render_status status = write(out.stream()); !status.ok())
        fail_to_write(file, status);
    require_open(out.keep());
}

// The format to write. Throws before anything is drawn or opened when there is none.
std::string format_of(const std::string& file, const output_options& options)
{
    const std::string named = file == "-" ? "PNG" : extension_of(file);
    const std::string format = options.format.empty() ? named : options.format;
    if (!is_written(format))
        throw failure("klv does not write ." + format + " files");
    return format;
}

void draw(vMETAFILE& picture, const std::string& label, const render_options& options, oMEMDIB& into)
{
    progress_bar progress("drawing " + label);
    render_options shown(options);
    shown.progress = &progress;
    require(render_bitmap(picture, shown, into));
}

} // namespace

std::string extension_of(const std::string& file)
{
    const auto dot = file.rfind('.');
    if (dot == std::string::npos || file.find('/', dot) != std::string::npos)
        return {};
    std::string extension = file.substr(dot + 1);
    std::transform(extension.begin(), extension.end(), extension.begin(),
        [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return extension;
}

void write_output(vMETAFILE& picture, const std::string& file, const output_options& options)
{
    if (format_of(file, options) == recorded_picture) {
        fill(file, [&](vSTREAM& out) { return write_picture(picture, out); });
        return;
    }
    oMEMDIB bitmap;
    draw(picture, options.input.empty() ? file : options.input, options.render, bitmap);
    write_output(bitmap, file, options);
}

void write_output(oMEMDIB& bitmap, const std::string& file, const output_options& options)
{
    const std::string format = format_of(file, options);
    progress_bar progress("writing " + file);
    fill(file, [&](vSTREAM& out) {
        return format == recorded_picture ? record_bitmap(bitmap, out)
                                          : write_bitmap(bitmap, format, out, options.depth, &progress);
    });
}

} // namespace klv::tool
