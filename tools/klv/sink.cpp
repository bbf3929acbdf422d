#include "tools/klv/sink.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "filters/bitmap_filter.h"
#include "filters/filter_list.h"
#include "streams/memory_stream.h"
#include "tools/klv/failure.h"

namespace klv::tool {
namespace {

struct close_file {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

void copy_to(vMEMSTREAM& encoded, std::FILE* out)
{
    std::array<std::uint8_t, 1 << 16> chunk{};
    encoded.MoveFromStart(0);
    while (!encoded.AtEnd()) {
        const auto got = encoded.ReadPlain(chunk.data(), static_cast<std::uint32_t>(chunk.size()));
        if (got == 0 || std::fwrite(chunk.data(), 1, got, out) != got)
            throw failure(std::strerror(errno ? errno : EIO));
    }
    if (std::fflush(out) != 0)
        throw failure(std::strerror(errno));
}

void write_file(vMEMSTREAM& encoded, const std::string& file)
{
    if (file == "-") {
        copy_to(encoded, stdout);
        return;
    }
    const std::unique_ptr<std::FILE, close_file> out(std::fopen(file.c_str(), "wb"));
    if (!out)
        throw failure("can't write " + file + ": " + std::strerror(errno));
    try {
        copy_to(encoded, out.get());
    } catch (const failure& why) {
        std::remove(file.c_str());
        throw failure("can't write " + file + ": " + why.what());
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
    vMEMSTREAM out;
    picture >> out;
    if (out.Status() != vSTREAM_OK || out.Size() != picture.Length())
        throw failure("memory ran out");
    write_file(out, file);
}

void write_bitmap(oDIB& bitmap, const std::string& format, const std::string& file)
{
    const oFILTERLIST filters;
    oBMFILTER* const filter = bitmap_writer(format);
    if (!filter)
        throw failure("klv does not write ." + format + " files");
    vMEMSTREAM out;
    const auto status = filter->Convert(bitmap, out);
    if (status != oFILTER_OK)
        throw failure(std::string("writing ") + format + ": " + describe(status));
    write_file(out, file);
}

} // namespace klv::tool
