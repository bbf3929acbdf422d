#include "tools/klv/sink.h"

#include "klv/bitmaps/dib_widen.h"
#include "klv/filters/bitmap_filter.h"
#include "klv/filters/raster/imaging_library.h"
#include "klv/streams/file.h"
#include "klv/streams/memory_stream.h"

#include "tools/klv/bitmap_picture.h"
#include "tools/klv/failure.h"
#include "tools/klv/format_list.h"
#include "tools/klv/interrupt.h"
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

// Opens the output, lets write fill it, and removes a file that could not be filled.
template <typename Write> void write_output(const std::string& file, Write write)
{
    if (file == "-") {
        vMEMSTREAM encoded;
        write(encoded);
        copy_to_standard_output(encoded);
        return;
    }
    errno = 0;
    vFILE out(vSTRING(file), vFILE::truncate);
    if (out.Status() != vSTREAM_OK)
        throw failure("can't write " + file + ": " + std::strerror(errno ? errno : EIO));
    try {
        write(out);
        if (out.Status() == vSTREAM_WRITE_ERROR)
            throw failure("can't write " + file + ": " + std::strerror(errno ? errno : EIO));
    } catch (...) {
        out.Close();
        std::remove(file.c_str());
        throw;
    }
}

constexpr std::array<std::uint16_t, 4> depths{1, 4, 8, 24};

// The depth in which the format takes what has so many bits: the same, the next greater, else the greatest.
std::uint16_t depth_in(const oBMFILTER& format, int bits)
{
    std::uint16_t best = 0;
    for (const std::uint16_t depth : depths)
        if (format.ExportColourDepths(depth) && best < bits)
            best = depth;
    return best;
}

void write_lines(oBMFILTER& format, oDIB& bitmap, vSTREAM& out, const std::string& file)
{
    progress_bar progress("writing " + file);
    static_cast<oFILTER&>(format).SetProgressInd(&progress);
    const auto status = format.Convert(bitmap, out);
    format.RemoveProgressInd();
    if (status == oFILTER_OK)
        return;
    if (interrupted())
        throw failure("cancelled");
    if (out.Status() == vSTREAM_WRITE_ERROR)
        throw failure("can't write all of " + file);
    const bool library_missing = oBMFILTER::MissingLibrary() != missing_library::none;
    if (status == oFILTER_FAILED && !library_missing)
        throw failure("the format of " + file + " can't hold this image");
    throw failure("writing " + file + ": " + reason_of(status));
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

void write_picture(vMETAFILE& picture, const std::string& file)
{
    write_output(file, [&](vSTREAM& out) {
        picture >> out;
        if (out.Size() != picture.Length())
            throw failure(file == "-" ? "memory ran out" : "can't write all of " + file);
    });
}

void write_picture_of(oMEMDIB& bitmap, const std::string& file)
{
    write_output(file, [&](vSTREAM& out) { record_bitmap(bitmap, out); });
}

void write_bitmap(
    oMEMDIB& bitmap, const std::string& format, const std::string& file, std::optional<int> depth)
{
    format_list formats;
    oBMFILTER* const filter = formats.writer_of(format);
    if (!filter)
        throw failure("klv does not write ." + format + " files");
    const int wanted = std::min(depth.value_or(bitmap.ColourDepth()), 24);
    const std::uint16_t written = depth_in(*filter, wanted);
    const int reduced = std::min<int>(wanted, written);
    if (reduced < bitmap.ColourDepth() && !bitmap.Reduce(reduced))
        throw failure("memory ran out");
    write_output(file, [&](vSTREAM& out) {
        if (written == bitmap.ColourDepth())
            return write_lines(*filter, bitmap, out, file);
        widened_dib widened(bitmap, written);
        write_lines(*filter, widened, out, file);
    });
}

} // namespace klv::tool
