#pragma once

#include <stdexcept>
#include <string>

namespace klv::tool {

/// Why a file could not be done: the reason alone, without the file's name. Thrown inside the tool only, up
/// to the loop over the files, which prints it.
class failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// One line on standard error: `klv: FILE: REASON`.
void print_failure(const std::string& file, const std::string& reason);
/// The same for what was done all the same.
void print_warning(const std::string& file, const std::string& reason);

} // namespace klv::tool
