#pragma once

#include "klv/core/string.h"
#include "klv/rendering/render_status.h"
#include "klv/streams/file.h"

#include <string_view>

namespace klv {

/// A file that is being written. Unless it is kept in the end, it is removed; what is no regular file (a
/// pipe, a device) never is.
class output_file {
public:
    /// Opens the file and empties it.
    explicit output_file(std::string_view name) noexcept;
    ~output_file();
    output_file(const output_file&) = delete;
    output_file& operator=(const output_file&) = delete;

    /// How opening it, and since then writing it, went.
    render_status status() const noexcept;
    [[nodiscard]] vSTREAM& stream() noexcept { return file_; }
    /// Closes the file, which stays unless its status is a failure. \return the status
    render_status keep() noexcept;

private:
    vSTRING name_;
    vFILE file_;
    bool kept_ = false;
};

} // namespace klv
