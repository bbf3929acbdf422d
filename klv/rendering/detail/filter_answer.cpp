#include "klv/rendering/detail/filter_answer.h"

#include "klv/filters/bitmap_filter.h"
#include "klv/filters/raster/imaging_library.h"

namespace klv {
namespace {

render_code code_without_library() noexcept
{
    switch (oBMFILTER::MissingLibrary()) {
    case missing_library::imaging_module:
        return render_code::missing_module;
    case missing_library::format_library:
        return render_code::missing_library;
    case missing_library::none:
        break;
    }
    return render_code::damaged;
}

render_code code_of(const oFILTER& filter, oFILTER_STATUS answer) noexcept
{
    switch (answer) {
    case oFILTER_OK:
    case oFILTER_RECOGNISED:
        return render_code::done;
    case oFILTER_FAILED:
        return filter.Type() == oFILTER_METAFILE ? render_code::damaged : code_without_library();
    case oFILTER_NO_MEMORY:
        return render_code::no_memory;
    case oFILTER_BAD_DATA:
        return render_code::damaged;
    case oFILTER_READ_ERROR:
        return render_code::unreadable;
    case oFILTER_UNSUPPORTED:
        return render_code::unsupported;
    case oFILTER_WRITE_ERROR:
        return render_code::unwritable;
    case oFILTER_CANCELLED:
        return render_code::cancelled;
    }
    return render_code::damaged;
}

} // namespace

render_status status_of(const oFILTER& filter, oFILTER_STATUS answer) noexcept
{
    const render_code code = code_of(filter, answer);
    const bool missing = code == render_code::missing_module || code == render_code::missing_library;
    return missing ? render_status(code) : render_status(code, vSTRING(describe(answer)));
}

} // namespace klv
