#include "klv/rendering/save.h"

#include "klv/bitmaps/dib_widen.h"
#include "klv/bitmaps/memory_dib.h"
#include "klv/filters/bitmap_filter.h"
#include "klv/filters/filter_set.h"
#include "klv/metafiles/metafile.h"
#include "klv/rendering/bitmap_picture.h"
#include "klv/rendering/detail/filter_answer.h"
#include "klv/rendering/document.h"
#include "klv/rendering/output_file.h"

#include <algorithm>
#include <array>

namespace klv {
namespace {

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

render_status write_lines(oBMFILTER& format, oDIB& bitmap, vSTREAM& out, oPROGRESS* progress)
{
    static_cast<oFILTER&>(format).SetProgressInd(progress);
    const auto answer = format.Convert(bitmap, out);
    format.RemoveProgressInd();
    if (answer == oFILTER_OK)
        return {};
    if (progress && progress->Stop())
        return render_code::cancelled;
    if (out.Status() == vSTREAM_WRITE_ERROR)
        return render_code::unwritable;
    render_status status = status_of(format, answer);
    if (status.code() == render_code::damaged)
        return {render_code::unsupported, vSTRING("the format can't hold this image")};
    return status;
}

vSTRING upper(std::string_view extension)
{
    vSTRING format(extension);
    format.ConvertUpper();
    return format;
}

std::string_view extension_of(std::string_view file)
{
    const auto dot = file.rfind('.');
    if (dot == std::string_view::npos || file.find('/', dot) != std::string_view::npos)
        return {};
    return file.substr(dot + 1);
}

} // namespace

bool is_written(std::string_view format) noexcept
{
    const vSTRING wanted = upper(format);
    return wanted.View() == recorded_picture_format || filter_set().writer_of(wanted.View()) != nullptr;
}

render_status write_picture(vMETAFILE& picture, vSTREAM& out) noexcept
{
    picture >> out;
    return out.Size() == picture.Length() ? render_status() : render_code::unwritable;
}

render_status write_bitmap(oMEMDIB& bitmap, std::string_view format, vSTREAM& out, std::optional<int> depth,
    oPROGRESS* progress) noexcept
{
    const filter_set filters;
    oFILTER* const found = filters.writer_of(format);
    if (!found || found->Type() != oFILTER_BITMAP)
        return filters.complete() ? render_code::unknown_format : render_code::no_memory;
    auto& filter = static_cast<oBMFILTER&>(*found);
    const int wanted = std::min<int>(depth.value_or(bitmap.ColourDepth()), depths.back());
    const std::uint16_t written = depth_in(filter, wanted);
    const int reduced = std::min<int>(wanted, written);
    if (reduced < bitmap.ColourDepth() && !bitmap.Reduce(reduced))
        return render_code::no_memory;
    if (written == bitmap.ColourDepth())
        return write_lines(filter, bitmap, out, progress);
    widened_dib widened(bitmap, written);
    return write_lines(filter, widened, out, progress);
}

render_status save(const drawable& what, vSTREAM& out, const save_options& options) noexcept
{
    const vSTRING format = upper(options.format);
    if (format.Null() || (!what.picture() && !what.bitmap()))
        return render_code::bad_options;
    const bool recorded = format.View() == recorded_picture_format;
    if (recorded && what.picture())
        return write_picture(*what.picture(), out);
    oMEMDIB bitmap(0);
    if (what.bitmap())
        bitmap = oMEMDIB(*what.bitmap(), 0);
    else if (auto status = render_bitmap(what, options.render, bitmap); !status.ok())
        return status;
    if (!bitmap.HasPixels())
        return render_code::no_memory;
    return recorded ? record_bitmap(bitmap, out)
                    : write_bitmap(bitmap, format.View(), out, options.depth, options.render.progress);
}

render_status save(const drawable& what, std::string_view file, const save_options& options) noexcept
{
    save_options named(options);
    if (named.format.empty())
        named.format = extension_of(file);
    if (!is_written(named.format))
        return render_code::unknown_format;
    output_file out(file);
    if (auto status = out.status(); !status.ok())
        return status;
    if (auto status = save(what, out.stream(), named); !status.ok())
        return status;
    return out.keep();
}

} // namespace klv
