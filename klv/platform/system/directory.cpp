#include "klv/platform/system/directory.h"

#include "klv/platform/system/path.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <new>

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

namespace klv {

namespace {

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// "*" and "?" against a whole name. The last star is the only one worth going back to.
bool matches(std::string_view pattern, std::string_view name)
{
    std::size_t p = 0;
    std::size_t n = 0;
    std::size_t after_star = std::string_view::npos;
    std::size_t star_end = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            after_star = ++p;
            star_end = n;
        } else if (p < pattern.size() && (pattern[p] == '?' || lower(pattern[p]) == lower(name[n]))) {
            ++p;
            ++n;
        } else if (after_star != std::string_view::npos) {
            p = after_star;
            n = ++star_end;
        } else {
            return false;
        }
    }
    return std::all_of(
        pattern.begin() + static_cast<std::ptrdiff_t>(p), pattern.end(), [](char c) { return c == '*'; });
}

template <class Operation> bool on_host_path(const std::string& path, Operation operation) noexcept
{
    try {
        return operation(host_path(path).c_str());
    } catch (const std::bad_alloc&) {
        return false;
    }
}

struct directory_closer {
    void operator()(DIR* directory) const { ::closedir(directory); }
};

} // namespace

std::vector<found_file> find_files(const std::string& pattern)
{
    const auto host = host_path(pattern);
    const auto name_start = host.rfind('/') + 1;
    const auto where = name_start == 0 ? std::string(".") : host.substr(0, name_start);
    const auto wanted = host.substr(name_start) == "*.*" ? std::string("*") : host.substr(name_start);

    std::vector<found_file> found;
    const std::unique_ptr<DIR, directory_closer> directory(::opendir(where.c_str()));
    if (!directory)
        return found;
    while (const dirent* entry = ::readdir(directory.get())) {
        struct stat status;
        if (!matches(wanted, entry->d_name)
            || ::fstatat(::dirfd(directory.get()), entry->d_name, &status, 0) != 0)
            continue;
        found.push_back({entry->d_name, S_ISREG(status.st_mode), static_cast<std::uint64_t>(status.st_size),
            status.st_mtime});
    }
    std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
    return found;
}

std::string current_directory()
{
    std::error_code error;
    return std::filesystem::current_path(error).string();
}

bool make_directory(const std::string& path) noexcept
{
    constexpr ::mode_t new_directory_mode = 0777;
    return on_host_path(path, [](const char* host) { return ::mkdir(host, new_directory_mode) == 0; });
}

bool change_directory(const std::string& path) noexcept
{
    return on_host_path(path, [](const char* host) { return ::chdir(host) == 0; });
}

bool change_drive(char letter) noexcept
{
    const char drive[] = {letter, ':', '\\', '\0'};
    return on_host_path(drive, [](const char* host) { return ::chdir(host) == 0; });
}

bool can_enter_directory(const std::string& path) noexcept
{
    return on_host_path(path, [](const char* host) {
        struct stat status;
        return ::stat(host, &status) == 0 && S_ISDIR(status.st_mode) && ::access(host, X_OK) == 0;
    });
}

std::string temporary_directory()
{
    const char* chosen = std::getenv("TMPDIR");
    std::string directory = chosen && *chosen ? chosen : "/tmp";
    if (!can_enter_directory(directory))
        return {};
    if (directory.back() != '/')
        directory += '/';
    return directory;
}

} // namespace klv
