#pragma once

#include <string>
#include <string_view>

namespace klv {

/// A path as the host's file system takes it. Paths may be written with backslashes, with a mapped drive's
/// letter ("Z:\pictures\a.wmf") or its network name ("\\server\share\pictures\a.wmf", see network.h); an
/// existing file of exactly the given name is taken as it is.
std::string host_path(std::string_view path);

/// Whether path begins with a letter and a colon.
bool has_drive(std::string_view path) noexcept;

} // namespace klv
