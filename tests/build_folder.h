#pragma once

#include <filesystem>
#include <string>

namespace klv::test {

/// The folder of the build that the running program belongs to, where the tool and the modules lie. Programs
/// of tests, benchmarks and fuzzing lie in a folder of it; no path of the build stands in them.
inline std::string build_folder()
{
    return std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path().string();
}

/// The imaging module of that build.
inline std::string imaging_module_path() { return build_folder() + "/libklv_imaging.so"; }

} // namespace klv::test
