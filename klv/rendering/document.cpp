#include "klv/rendering/document.h"

#include "klv/filters/bitmap_filter.h"
#include "klv/filters/filter_set.h"
#include "klv/filters/raster/eps_filter.h"
#include "klv/metafiles/record_cursor.h"
#include "klv/rendering/detail/filter_answer.h"
#include "klv/streams/file.h"
#include "klv/streams/memory_stream.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <new>
#include <utility>

#include <sys/stat.h>

namespace klv {
namespace {

render_status unreadable(const char* why) { return {render_code::unreadable, vSTRING(why)}; }

render_status check_is_file(const vSTRING& name)
{
    struct stat about { };
    if (stat(name(), &about) != 0)
        return unreadable(std::strerror(errno));
    if (S_ISDIR(about.st_mode))
        return unreadable("is a directory");
    if (std::uint64_t(about.st_size) > UINT32_MAX)
        return unreadable("is larger than 4 GiB");
    return {};
}

bool is_recorded_picture(vSTREAM& stream)
{
    std::array<std::uint8_t, vMETAFILE::signature.size()> start{};
    const auto got = stream.ReadPlain(start.data(), static_cast<std::uint32_t>(start.size()));
    stream.MoveFromStart(0);
    return got == start.size() && std::memcmp(start.data(), vMETAFILE::signature.data(), start.size()) == 0;
}

render_status read_recorded_picture(document& opened)
{
    opened.format = vSTRING(recorded_picture_format);
    opened.description = vSTRING("Recorded picture");
    opened.picture.reset(new vMETAFILE(*opened.stream));
    if (!opened.picture)
        return render_code::no_memory;
    record_cursor cursor(*opened.picture);
    metafile_record record;
    std::uint32_t count = 0;
    while (cursor.next(record))
        ++count;
    if (!cursor.broken())
        return {};
    if (count == 0)
        return render_code::damaged;
    opened.warning.FormatString("damaged after record %u; what comes before it was kept", count);
    return {};
}

// A filter that reports to an indicator for a while.
class reported {
public:
    reported(oFILTER& filter, oPROGRESS* progress)
        : filter_(filter)
    {
        filter_.SetProgressInd(progress);
    }
    ~reported() { filter_.RemoveProgressInd(); }
    reported(const reported&) = delete;
    reported& operator=(const reported&) = delete;

private:
    oFILTER& filter_;
};

render_status read_vector(document& opened, oLAFILTER& filter, const open_options& options)
{
    opened.picture.reset(new vMETAFILE);
    if (!opened.picture)
        return render_code::no_memory;
    const reported to(filter, options.progress);
    filter.ReadingLevel(options.level);
    const auto answer = filter.Convert(*opened.stream, opened.picture.get());
    if (answer == oFILTER_OK)
        return {};
    // A refused header records nothing; anything later leaves what was drawn before it.
    if (answer == oFILTER_CANCELLED || opened.picture->LogicalWidth() <= 0
        || opened.picture->GetNoOfRecords() == 0)
        return status_of(filter, answer);
    opened.warning = vSTRING(describe(answer)) + "; what could be read was kept";
    return {};
}

render_status choose_resolution(document& opened, oBMFILTER& filter, std::optional<std::uint32_t> wanted)
{
    const std::uint32_t count = filter.GetResolutionCount(opened.stream->Name());
    opened.resolutions.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i)
        opened.resolutions.push_back(filter.GetResolution(i));
    if (!wanted || count == 0)
        return {};
    if (*wanted >= count) {
        vSTRING words;
        words.FormatString("has no resolution %u; the largest is %u", *wanted, count - 1);
        return {render_code::bad_options, words};
    }
    filter.SetResolution(*wanted);
    return {};
}

render_status read_raster(document& opened, oBMFILTER& filter, const open_options& options)
{
    if (auto status = choose_resolution(opened, filter, options.resolution); !status.ok())
        return status;
    const reported to(filter, options.progress);
    const auto answer = filter.Convert(*opened.stream, *opened.bitmap);
    if (answer != oFILTER_OK)
        return status_of(filter, answer);
    if (!opened.bitmap->HasPixels())
        return {render_code::damaged, vSTRING("holds no image")};
    return {};
}

// Of PostScript only the preview that some files carry can be shown.
render_status read_preview(document& opened, EPSFILTER& filter)
{
    const auto answer = filter.Convert(*opened.stream, *opened.bitmap);
    if (answer == oFILTER_FAILED)
        return {render_code::unsupported, vSTRING("holds no preview, and klv draws no PostScript")};
    return status_of(filter, answer);
}

render_status read_foreign(document& opened, const open_options& options)
{
    const filter_set filters;
    oFILTER* const filter = filters.reader_of(*opened.stream);
    if (!filter && !filters.complete())
        return render_code::no_memory;
    if (!filter)
        return {render_code::unknown_format, vSTRING("is of no format that klv reads")};
    opened.format = filter->GetID();
    opened.description = filter->GetDescription();
    if (filter->Type() == oFILTER_METAFILE)
        return read_vector(opened, static_cast<oLAFILTER&>(*filter), options);
    opened.bitmap.reset(new oMEMDIB);
    if (!opened.bitmap)
        return render_code::no_memory;
    if (filter->Type() == oFILTER_BITMAP)
        return read_raster(opened, static_cast<oBMFILTER&>(*filter), options);
    return read_preview(opened, static_cast<EPSFILTER&>(*filter));
}

} // namespace

document& document::operator=(document&& other) noexcept
{
    picture = std::move(other.picture); // leaves its stream before the stream goes
    stream = std::move(other.stream);
    bitmap = std::move(other.bitmap);
    format = std::move(other.format);
    description = std::move(other.description);
    resolutions = std::move(other.resolutions);
    warning = std::move(other.warning);
    return *this;
}

render_status open_file(std::string_view name, document& into, const open_options& options) noexcept
{
    const vSTRING file(name);
    if (auto status = check_is_file(file); !status.ok())
        return status;
    std::unique_ptr<vSTREAM> stream(new vFILE(file, vFILE::read_only));
    if (!stream)
        return render_code::no_memory;
    if (stream->Status() != vSTREAM_OK)
        return unreadable(errno ? std::strerror(errno) : "can't be opened");
    return open_stream(std::move(stream), into, options);
}

render_status open_bytes(std::span<const std::uint8_t> bytes, document& into, std::string_view name,
    const open_options& options) noexcept
{
    std::unique_ptr<vSTREAM> stream(new vMEMSTREAM{vSTRING(name)});
    const auto size = static_cast<std::uint32_t>(bytes.size());
    if (size != bytes.size())
        return unreadable("is larger than 4 GiB");
    if (!stream || (size != 0 && stream->WritePlain(bytes.data(), size) != size))
        return render_code::no_memory;
    return open_stream(std::move(stream), into, options);
}

render_status open_stream(
    std::unique_ptr<vSTREAM> stream, document& into, const open_options& options) noexcept
try {
    if (!stream)
        return render_code::unreadable;
    if (stream->Size() == 0)
        return unreadable("is empty");
    document opened;
    opened.stream = std::move(stream);
    opened.stream->MoveFromStart(0);
    render_status status
        = is_recorded_picture(*opened.stream) ? read_recorded_picture(opened) : read_foreign(opened, options);
    if (status.ok())
        into = std::move(opened);
    return status;
} catch (const std::bad_alloc&) {
    return render_code::no_memory;
}

} // namespace klv
