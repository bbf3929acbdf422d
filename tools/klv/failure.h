#pragma once

#include "klv/rendering/render_status.h"

#include <new>
#include <stdexcept>
#include <string>

namespace klv::tool {

/// Why a file could not be done: the reason alone, without the file's name. Thrown inside the tool only, up
/// to the loop over the files, which prints it.
class failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Why the library failed, with what there is to install when something is missing.
std::string reason_of(const render_status& status);

/// Throws failure unless the status is that of work done.
void require(const render_status& status);

/// Runs the work on a file. \return why it could not be done; empty when it was
template <class Work> std::string reason_of_failure(Work work)
{
    try {
        work();
        return {};
    } catch (const failure& why) {
        return why.what();
    } catch (const std::bad_alloc&) {
        return "memory ran out";
    }
}

/// One line on standard error: `klv: FILE: REASON`.
void print_failure(const std::string& file, const std::string& reason);
/// The same for what was done all the same.
void print_warning(const std::string& file, const std::string& reason);

} // namespace klv::tool
