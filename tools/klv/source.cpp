#include "tools/klv/source.h"

#include "klv/filters/bitmap_filter.h"
#include "klv/filters/raster/eps_filter.h"
#include "klv/filters/vector_filter.h"
#include "klv/metafiles/record_cursor.h"
#include "klv/streams/file.h"
#include "klv/streams/memory_stream.h"

#include "tools/klv/failure.h"
#include "tools/klv/format_list.h"
#include "tools/klv/progress_bar.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>

#include <sys/stat.h>

namespace klv::tool {
namespace {

constexpr std::string_view picture_signature = "ZYNVMMETA";

std::unique_ptr<vSTREAM> read_standard_input()
{
    auto stream = std::unique_ptr<vSTREAM>(new vMEMSTREAM(vSTRING("standard input")));
    std::array<std::uint8_t, 1 << 16> chunk{};
    while (const std::size_t got = std::fread(chunk.data(), 1, chunk.size(), stdin))
        if (stream->WritePlain(chunk.data(), static_cast<std::uint32_t>(got)) != got)
            throw failure("memory ran out");
    stream->MoveFromStart(0);
    return stream;
}

void check_is_file(const std::string& file)
{
    struct stat about { };
    if (stat(file.c_str(), &about) != 0)
        throw failure(std::strerror(errno));
    if (S_ISDIR(about.st_mode))
        throw failure("is a directory");
    if (std::uint64_t(about.st_size) > UINT32_MAX)
        throw failure("is larger than 4 GiB");
}

std::unique_ptr<vSTREAM> open_stream(const std::string& file)
{
    if (file == "-")
        return read_standard_input();
    check_is_file(file);
    auto stream = std::unique_ptr<vSTREAM>(new vFILE(vSTRING(file), vFILE::read_only));
    if (!stream)
        throw failure("memory ran out");
    if (stream->Status() != vSTREAM_OK)
        throw failure(errno ? std::strerror(errno) : "can't be opened");
    return stream;
}

bool is_recorded_picture(vSTREAM& stream)
{
    std::array<std::uint8_t, picture_signature.size()> start{};
    const auto got = stream.ReadPlain(start.data(), static_cast<std::uint32_t>(start.size()));
    stream.MoveFromStart(0);
    return got == start.size() && std::memcmp(start.data(), picture_signature.data(), start.size()) == 0;
}

void open_recorded_picture(source& opened)
{
    opened.format = "VMM";
    opened.description = "Recorded picture";
    opened.picture.reset(new vMETAFILE(*opened.stream));
    if (!opened.picture)
        throw failure("memory ran out");
    record_cursor cursor(*opened.picture);
    metafile_record record;
    std::uint32_t count = 0;
    while (cursor.next(record))
        ++count;
    if (!cursor.broken())
        return;
    if (count == 0)
        throw failure(describe(oFILTER_FAILED));
    opened.warning = "damaged after record " + std::to_string(count) + "; what comes before it was kept";
}

void read_vector(source& opened, oLAFILTER& filter, const std::string& file)
{
    opened.picture.reset(new vMETAFILE);
    if (!opened.picture)
        throw failure("memory ran out");
    progress_bar progress("reading " + file);
    filter.ReadingLevel(oREADING_LEVEL::faithful);
    static_cast<oFILTER&>(filter).SetProgressInd(&progress);
    const auto status = filter.Convert(*opened.stream, opened.picture.get());
    filter.RemoveProgressInd();
    if (status == oFILTER_OK)
        return;
    // A refused header records nothing; anything later leaves what was drawn before it.
    if (status == oFILTER_CANCELLED || opened.picture->LogicalWidth() <= 0
        || opened.picture->GetNoOfRecords() == 0)
        throw failure(describe(status));
    opened.warning = std::string(describe(status)) + "; what could be read was kept";
}

void make_bitmap(source& opened)
{
    opened.bitmap.reset(new oMEMDIB);
    if (!opened.bitmap)
        throw failure("memory ran out");
}

void choose_resolution(
    source& opened, oBMFILTER& filter, const std::string& file, std::optional<std::uint32_t> wanted)
{
    const std::uint32_t count = filter.GetResolutionCount(vSTRING(file));
    for (std::uint32_t i = 0; i < count; ++i)
        opened.resolutions.push_back(filter.GetResolution(i));
    if (!wanted || count == 0)
        return;
    if (*wanted >= count)
        throw failure(
            "has no resolution " + std::to_string(*wanted) + "; the largest is " + std::to_string(count - 1));
    filter.SetResolution(*wanted);
}

void read_raster(
    source& opened, oBMFILTER& filter, const std::string& file, std::optional<std::uint32_t> resolution)
{
    make_bitmap(opened);
    choose_resolution(opened, filter, file, resolution);
    progress_bar progress("reading " + file);
    static_cast<oFILTER&>(filter).SetProgressInd(&progress);
    const auto status = filter.Convert(*opened.stream, *opened.bitmap);
    filter.RemoveProgressInd();
    if (status != oFILTER_OK)
        throw failure(reason_of(status));
    if (!opened.bitmap->HasPixels())
        throw failure("holds no image");
}

// Of PostScript only the preview that some files carry can be shown.
void read_preview(source& opened, EPSFILTER& filter)
{
    make_bitmap(opened);
    const auto status = filter.Convert(*opened.stream, *opened.bitmap);
    if (status == oFILTER_FAILED)
        throw failure("holds no preview, and klv draws no PostScript");
    if (status != oFILTER_OK)
        throw failure(reason_of(status));
}

} // namespace

source open_source(const std::string& file, std::optional<std::uint32_t> resolution)
{
    source opened;
    opened.stream = open_stream(file);
    if (opened.stream->Size() == 0)
        throw failure("is empty");
    if (is_recorded_picture(*opened.stream)) {
        open_recorded_picture(opened);
        return opened;
    }
    format_list formats;
    oFILTER* const filter = formats.reader_of(*opened.stream);
    if (!filter)
        throw failure("is of no format that klv reads");
    opened.format = filter->GetID()();
    opened.description = filter->GetDescription()();
    switch (filter->Type()) {
    case oFILTER_METAFILE:
        read_vector(opened, static_cast<oLAFILTER&>(*filter), file);
        break;
    case oFILTER_BITMAP:
        read_raster(opened, static_cast<oBMFILTER&>(*filter), file, resolution);
        break;
    case oFILTER_POSTSCRIPT:
        read_preview(opened, static_cast<EPSFILTER&>(*filter));
        break;
    case oFILTER_NONE:
        throw failure(describe(oFILTER_UNSUPPORTED));
    }
    return opened;
}

} // namespace klv::tool
