#pragma once

#include "klv/core/string.h"

namespace klv {

enum class render_code : int {
    done,
    cancelled, ///< the progress indicator asked to stop
    no_memory,
    bad_options, ///< an option is out of its range
    unreadable, ///< the file is not there, is no file, or can't be read
    unknown_format, ///< of no format that is read, or to be written in none that is written
    damaged, ///< not what its format prescribes
    unsupported, ///< a variant of its format, or an operation, that is not handled
    missing_module, ///< the imaging module, which handles the format, is not installed
    missing_library, ///< the library by which the imaging module handles the format is not installed
    unwritable, ///< the output did not take all that was to be written
};

/// How an operation of this room ended: a code for programs, words for people.
class [[nodiscard]] render_status {
public:
    render_status() noexcept = default;
    /// With the words that a code has.
    render_status(render_code code) noexcept
        : code_(code)
    {
    }
    render_status(render_code code, const vSTRING& words) noexcept
        : code_(code)
        , words_(words)
    {
    }

    [[nodiscard]] bool ok() const noexcept { return code_ == render_code::done; }
    [[nodiscard]] render_code code() const noexcept { return code_; }
    /// What to tell a user: a clause in lower case, without the file's name and without a stop.
    [[nodiscard]] const char* words() const noexcept;

private:
    render_code code_ = render_code::done;
    vSTRING words_; // empty for those of the code
};

} // namespace klv
