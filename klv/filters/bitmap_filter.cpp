#include "klv/filters/bitmap_filter.h"

#include "klv/base/buffer.h"
#include "klv/bitmaps/dib.h"
#include "klv/bitmaps/memory_dib.h"
#include "klv/filters/raster/imaging_library.h"
#include "klv/streams/stream.h"

#include <algorithm>
#include <optional>

namespace klv {

namespace {

using imaging::bitmap_handle;
using imaging::file_info;
using imaging::imaging_ok;

/// How the last conversion of this thread ended.
struct last_conversion {
    /// What a failure to load the module answers.
    oFILTER_STATUS status = oFILTER_FAILED;
    missing_library missing = missing_library::none;
};
constinit thread_local last_conversion last;

/// A conversion under way, which the module hands to the callbacks.
struct bitmap_conversion {
    const BMINTERFACE& module;
    vSTREAM& stream;
    oDIB* bitmap = nullptr;
    oPROGRESS* progress = nullptr;
    oFILTER_STATUS status = oFILTER_OK;
    std::uint32_t passes = 1; ///< of a writer over the bitmap
    std::uint32_t written_lines = 0; ///< in all of them

    static bitmap_conversion& of(void* user) { return *static_cast<bitmap_conversion*>(user); }
};

// ---- Stream callbacks

std::int32_t open_stream(const char*, std::int32_t, void* user)
{
    bitmap_conversion::of(user).stream.MoveFromStart(0);
    return 1;
}

std::uint32_t read_stream(std::uint8_t* bytes, std::uint32_t count, void* user)
{
    if (count == 0)
        return 0;
    return static_cast<std::uint32_t>(
        std::max(bitmap_conversion::of(user).stream.ReadByteString(bytes, count), 0));
}

std::uint32_t write_stream(const std::uint8_t* bytes, std::uint32_t count, void* user)
{
    return count != 0 ? bitmap_conversion::of(user).stream.WriteBlock(bytes, count) : 0;
}

std::int32_t seek_stream(std::int32_t offset, std::int32_t origin, void* user)
{
    vSTREAM& stream = bitmap_conversion::of(user).stream;
    switch (origin) {
    case 0:
        return static_cast<std::int32_t>(stream.MoveFromStart(static_cast<std::uint32_t>(offset)));
    case 1:
        return static_cast<std::int32_t>(stream.MoveFromCur(offset));
    case 2:
        return static_cast<std::int32_t>(stream.MoveFromEnd(offset));
    default:
        return -1;
    }
}

std::int32_t close_stream(void*) { return 1; }

/// Names are file names to the module.
void access_files(const BMINTERFACE& module)
{
    module.RedirectIO(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
}

/// While it lives, the module reads and writes the conversion's stream instead of files.
class redirected_stream {
public:
    explicit redirected_stream(bitmap_conversion& work)
        : module_(work.module)
    {
        module_.RedirectIO(open_stream, read_stream, write_stream, seek_stream, close_stream, &work);
    }
    redirected_stream(const redirected_stream&) = delete;
    redirected_stream& operator=(const redirected_stream&) = delete;
    ~redirected_stream() { access_files(module_); }

private:
    const BMINTERFACE& module_;
};

/// Closes a stream while somebody else uses its file.
class closed_stream {
public:
    explicit closed_stream(vSTREAM* stream)
        : stream_(stream && stream->Close() ? stream : nullptr)
    {
    }
    closed_stream(const closed_stream&) = delete;
    closed_stream& operator=(const closed_stream&) = delete;
    ~closed_stream()
    {
        if (stream_)
            stream_->ReOpen();
    }

private:
    vSTREAM* stream_;
};

/// The module, whose absence is remembered.
const BMINTERFACE* wanted_module()
{
    const BMINTERFACE* const module = BMINTERFACE::get();
    if (!module)
        last.missing = missing_library::imaging_module;
    return module;
}

/// Whether an entry point succeeded. What it says about a library that is not there is remembered.
bool succeeded(std::int32_t result)
{
    if (result == imaging::imaging_library_missing)
        last.missing = missing_library::format_library;
    return result == imaging_ok;
}

/// The answer when the module is not there: never a success.
oFILTER_STATUS status_without_module() { return last.status == oFILTER_OK ? oFILTER_FAILED : last.status; }

// ---- Reading

/// The colour model and the depth as which a file's pixels are read.
struct delivered_layout {
    oCOLOUR_MODEL model;
    std::int32_t bits; ///< 0: not readable
};

delivered_layout layout_for(std::int32_t file_bits)
{
    switch (file_bits) {
    case 1:
    case 2:
        return {oMODEL_PALETTE1, 1};
    case 4:
        return {oMODEL_PALETTE4, 4};
    case 8:
        return {oMODEL_PALETTE8, 8};
    case 16:
    case 24:
    case 32:
        return {oMODEL_RGB24, 24};
    default:
        return {oMODEL_RGB24, 0};
    }
}

/// Reverses the order of a band's lines in place.
bool FlipBuffer(std::uint8_t* band, std::size_t line_bytes, std::int32_t lines)
{
    vBUFFER<std::uint8_t> temporary;
    if (!temporary.resize_uninitialized(line_bytes))
        return false;
    for (std::int32_t low = 0, high = lines - 1; low < high; ++low, --high) {
        std::uint8_t* const a = band + line_bytes * static_cast<std::size_t>(low);
        std::uint8_t* const b = band + line_bytes * static_cast<std::size_t>(high);
        std::copy_n(a, line_bytes, temporary.data());
        std::copy_n(b, line_bytes, a);
        std::copy_n(temporary.data(), line_bytes, b);
    }
    return true;
}

void take_colours(const BMINTERFACE& module, const bitmap_handle& handle, oDIB& target)
{
    const auto count = static_cast<std::uint16_t>(1U << handle.bits_per_pixel);
    vBUFFER<RGBQUAD> colours;
    if (colours.resize(count) && module.GetBitmapColors(&handle, 0, count, colours.data()) == imaging_ok)
        target.SetPalette(oDIBPALETTE(colours.data(), count));
}

std::int32_t LoadImageCB(const file_info&, const bitmap_handle& handle, std::uint8_t* band, std::int32_t row,
    std::int32_t lines, void* user)
{
    bitmap_conversion& work = bitmap_conversion::of(user);
    if (work.progress) {
        if (work.progress->Stop()) {
            work.status = oFILTER_CANCELLED;
            return 0;
        }
        work.progress->oSet(static_cast<std::uint32_t>(row));
    }
    if (row == 0 && handle.bits_per_pixel <= 8)
        take_colours(work.module, handle, *work.bitmap);
    std::int32_t first = row;
    if (handle.perspective != imaging::bottom_left) {
        first = handle.height - (row + lines);
        if (!FlipBuffer(band, static_cast<std::size_t>(handle.bytes_per_line), lines)) {
            work.status = oFILTER_NO_MEMORY;
            return 0;
        }
    }
    const int stored = work.bitmap->SetImageLines(band, oMODEL_RGB24, first, lines);
    if (!stored)
        work.status = oFILTER_NO_MEMORY;
    return stored;
}

oFILTER_STATUS load_image(bitmap_conversion& work, const char* name, bool photoshop)
{
    const BMINTERFACE& module = work.module;
    file_info info{};
    const bool described = succeeded(module.FileInfo(name, &info));
    if (last.missing != missing_library::none)
        return oFILTER_FAILED;
    if (!described || info.width < 0 || info.height < 0)
        return oFILTER_UNSUPPORTED;
    const delivered_layout layout = layout_for(info.bits_per_pixel);
    bitmap_handle handle{};
    if (layout.bits == 0 || module.InitBitmap(&handle, info.width, info.height, layout.bits) != imaging_ok)
        return oFILTER_UNSUPPORTED;

    module.AccessBitmap(&handle);
    const oDIBHEADER header(info.width, info.height, info.x_resolution, info.y_resolution, layout.model);
    const int made = work.bitmap->SetHeader(header);
    module.ReleaseBitmap(&handle);
    if (!made)
        return oFILTER_NO_MEMORY;

    if (work.progress) {
        work.progress->oStart();
        work.progress->oFullScale(static_cast<std::uint32_t>(info.height));
    }
    const std::int32_t colour_order = photoshop && info.bits_per_pixel > 8 ? 1 : 0;
    const bool loaded = succeeded(module.LoadFile(
        name, &handle, layout.bits, colour_order, imaging::load_flags_all_lines, LoadImageCB, &work));
    if (loaded)
        module.FreeBitmap(&handle);
    if (work.progress)
        work.progress->oTerminate();
    if (work.status != oFILTER_OK)
        return work.status;
    return loaded ? oFILTER_OK : oFILTER_FAILED;
}

// ---- Writing

/// How often a format's writer asks for each line: Photoshop files hold one channel after the other.
std::uint32_t passes_over_lines(std::uint16_t format, int depth)
{
    constexpr std::uint32_t channels = 3;
    return format == imaging::format_photoshop && depth > 8 ? channels : 1;
}

std::int32_t save_lines(
    const bitmap_handle&, std::uint8_t* band, std::int32_t row, std::int32_t lines, void* user)
{
    bitmap_conversion& work = bitmap_conversion::of(user);
    if (work.progress) {
        if (work.progress->Stop())
            return 0;
        work.progress->oSet(work.written_lines / work.passes);
    }
    oCOLOUR_MODEL model = oMODEL_RGB24;
    if (!work.bitmap->GetImageLines(row, lines, band, &model))
        return 0;
    work.written_lines += static_cast<std::uint32_t>(lines);
    return 1;
}

/// A bitmap's resolution for a file; 0 where the bitmap has none but the one that every header starts with.
std::int32_t resolution_to_write(std::int32_t pixels_per_metre, std::int32_t dots_per_inch)
{
    return pixels_per_metre == oDIBHEADER().info().biXPelsPerMeter ? 0 : dots_per_inch;
}

bool save_image(bitmap_conversion& work, std::uint16_t format)
{
    const BMINTERFACE& module = work.module;
    oDIBHEADER header;
    work.bitmap->GetHeader(header);
    bitmap_handle handle{};
    if (module.CreateBitmap(&handle, imaging::conventional_memory, header.Width(), header.Height(),
            header.ColourDepth(), 1, nullptr, imaging::bottom_left)
        != imaging_ok)
        return false;
    handle.x_resolution = resolution_to_write(header.info().biXPelsPerMeter, header.HorzDPI());
    handle.y_resolution = resolution_to_write(header.info().biYPelsPerMeter, header.VertDPI());
    const auto colours = work.bitmap->colours();
    if (!colours.empty() && colours.size() <= 256)
        module.PutBitmapColors(&handle, 0, static_cast<std::uint32_t>(colours.size()), colours.data());
    work.passes = passes_over_lines(format, header.ColourDepth());
    const bool saved = succeeded(module.SaveFile(imaging::redirected_name, &handle, format,
        header.ColourDepth(), imaging::best_quality, imaging::save_flags_default, save_lines, &work));
    module.FreeBitmap(&handle);
    return saved;
}

} // namespace

oBMFILTER::~oBMFILTER() { BMINTERFACE::discard(); }

missing_library oBMFILTER::MissingLibrary() noexcept { return last.missing; }

void oBMFILTER::SetProgressInd(oPROGRESSBM* progress)
{
    oFILTER::SetProgressInd(static_cast<oPROGRESS*>(progress));
}

oFILTER_STATUS oBMFILTER::CheckStream(vARCHIVE& in)
{
    const BMINTERFACE* const module = BMINTERFACE::get();
    if (!module)
        return LastStatus();
    if (!in.IsStream())
        return SetStatus(oFILTER_FAILED);
    bitmap_conversion work{*module, static_cast<vSTREAM&>(in)};
    const redirected_stream redirected(work);
    last = {oFILTER_OK, missing_library::none};
    file_info info{};
    const bool described = module->FileInfo(imaging::redirected_name, &info) == imaging_ok;
    return SetStatus(described ? oFILTER_OK : oFILTER_UNSUPPORTED);
}

oFILTER_STATUS oBMFILTER::Convert(vSTREAM& in, oDIB& out)
{
    const BMINTERFACE* const module = wanted_module();
    if (!module)
        return SetStatus(status_without_module());
    const vSTRING name = in.Name();
    const bool by_name
        = library_format_ == imaging::format_photo_cd || library_format_ == imaging::format_flashpix;
    if (by_name) {
        GetResolutionCount(name);
        const vSIZE wanted = GetResolution(resolution_);
        module->SetDimension(library_format_, wanted.Width(), wanted.Height());
    }
    last = {oFILTER_OK, missing_library::none};
    bitmap_conversion work{*module, in, &out, progress()};
    std::optional<redirected_stream> redirected;
    if (by_name)
        access_files(*module);
    else
        redirected.emplace(work);
    const closed_stream closed(library_format_ == imaging::format_flashpix ? &in : nullptr);
    last.status = load_image(work, name(), library_format_ == imaging::format_photoshop);
    return SetStatus(last.status);
}

oFILTER_STATUS oBMFILTER::ConvertBitmap(oDIB& in, vSTREAM& out, std::uint16_t format)
{
    const BMINTERFACE* const module = wanted_module();
    if (!module)
        return SetStatus(oFILTER_FAILED);
    if (progress()) {
        progress()->oStart();
        progress()->oFullScale(static_cast<std::uint32_t>(std::max(in.Height(), 0)));
    }
    last = {oFILTER_OK, missing_library::none};
    bitmap_conversion work{*module, out, &in, progress()};
    const redirected_stream redirected(work);
    const bool saved = save_image(work, format);
    if (saved && progress())
        progress()->oTerminate();
    last.status = saved ? oFILTER_OK : oFILTER_FAILED;
    return SetStatus(last.status);
}

oFILTER_STATUS oBMFILTER::Convert(vARCHIVE* in, vARCHIVE* out)
{
    if (!in || !out)
        return SetStatus(oFILTER_READ_ERROR);
    if (!in->IsStream() || !out->IsStream() || !wanted_module())
        return SetStatus(oFILTER_FAILED);
    return StoreBitmap(static_cast<vSTREAM&>(*in), static_cast<vSTREAM&>(*out));
}

oFILTER_STATUS oBMFILTER::StoreBitmap(vSTREAM& in, vSTREAM& out)
{
    oMEMDIB bitmap;
    Convert(in, bitmap);
    if (!bitmap.HasPixels())
        return LastStatus();
    out.MoveFromStart(0);
    bitmap >> out;
    if (LastStatus() == oFILTER_OK && out.Status() == vSTREAM_WRITE_ERROR)
        return SetStatus(oFILTER_WRITE_ERROR);
    return LastStatus();
}

std::uint32_t oBMFILTER::GetResolutionCount(vSTRING) { return 0; }

vSIZE oBMFILTER::GetResolution(std::uint32_t) { return vSIZE(); }

} // namespace klv
