#include "klv/rendering/render_status.h"

#include "klv/filters/filter.h"

namespace klv {

const char* render_status::words() const noexcept
{
    if (!words_.Null())
        return words_();
    switch (code_) {
    case render_code::done:
        return describe(oFILTER_OK);
    case render_code::cancelled:
        return describe(oFILTER_CANCELLED);
    case render_code::no_memory:
        return describe(oFILTER_NO_MEMORY);
    case render_code::bad_options:
        return "an option is out of its range";
    case render_code::unreadable:
        return describe(oFILTER_READ_ERROR);
    case render_code::unknown_format:
        return "the format is not known";
    case render_code::damaged:
        return describe(oFILTER_FAILED);
    case render_code::unsupported:
        return describe(oFILTER_UNSUPPORTED);
    case render_code::missing_module:
        return "the imaging module is missing";
    case render_code::missing_library:
        return "the imaging module lacks a library for this format";
    case render_code::unwritable:
        return describe(oFILTER_WRITE_ERROR);
    }
    return "unknown failure";
}

} // namespace klv
