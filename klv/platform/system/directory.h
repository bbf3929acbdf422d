#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

namespace klv {

/// One entry of a directory listing.
struct found_file {
    std::string name;
    bool normal_file; ///< what the attributes say
    std::uint64_t size; ///< bytes
    std::time_t modified;
};

/// The directory's entries whose names match the last part of pattern ("*" and "?", letters of either case;
/// "*.*" matches every name), sorted by name, with "." and "..".
std::vector<found_file> find_files(const std::string& pattern);

/// The process's current directory, without a trailing separator unless it is the root; empty on failure.
std::string current_directory();
bool make_directory(const std::string& path) noexcept;
/// Makes path the process's current directory.
bool change_directory(const std::string& path) noexcept;
/// Makes the directory that a drive's letter stands for current.
bool change_drive(char letter) noexcept;
/// Whether path is a directory that could be made current.
bool can_enter_directory(const std::string& path) noexcept;

/// The directory for temporary files with a trailing separator: the environment's TMPDIR, else /tmp; empty
/// when that is not a directory.
std::string temporary_directory();

} // namespace klv
