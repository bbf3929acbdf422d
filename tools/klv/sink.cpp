#include "tools/klv/sink.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "filters/bitmap_filter.h"
#include "filters/filter_list.h"
#include "streams/file.h"
#include "streams/memory_stream.h"
#include "tools/klv/failure.h"

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
    } catch (const failure&) {
        out.Close();
        std::remove(file.c_str());
        throw;
    }
}

oBMFILTER* bitmap_writer(const std::string& format)
{
    vMEMSTREAM by_name(vSTRING("." + format));
    oFILTER* filter = nullptr;
    if (oFILTERLIST::GetFilter(&by_name, &filter) != oFILTER_BITMAP || !filter->DoesExport())
        return nullptr;
    return static_cast<oBMFILTER*>(filter);
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

void write_bitmap(oDIB& bitmap, const std::string& format, const std::string& file)
{
    const oFILTERLIST filters;
    oBMFILTER* const filter = bitmap_writer(format);
    if (!filter)
        throw failure("klv does not write ." + format + " files");
    write_output(file, [&](vSTREAM& out) {
        const auto status = filter->Convert(bitmap, out);
        if (status != oFILTER_OK)
            throw failure("writing " + file + ": " + describe(status));
    });
}

} // namespace klv::tool
