#include "klv/platform/system/path.h"

#include "klv/platform/system/network.h"

#include <algorithm>

#include <unistd.h>

namespace klv {

namespace {

char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

bool begins_with(std::string_view path, std::string_view prefix)
{
    return path.size() >= prefix.size()
        && std::equal(
            prefix.begin(), prefix.end(), path.begin(), [](char a, char b) { return upper(a) == upper(b); });
}

bool is_separator(char c) { return c == '/' || c == '\\'; }

// The path with the drive or share that it begins with replaced by the directory it stands for.
std::string with_mounted_directory(std::string_view path)
{
    for (const auto& disk : connected_disks()) {
        for (std::string_view name :
            {std::string_view(disk.local_name), std::string_view(disk.remote_name)}) {
            if (name.empty() || !begins_with(path, name))
                continue;
            const auto rest = path.substr(name.size());
            if (rest.empty() || is_separator(rest.front()))
                return disk.directory + (rest.empty() ? "/" : std::string(rest));
        }
    }
    return std::string(path);
}

} // namespace

bool has_drive(std::string_view path) noexcept
{
    return path.size() >= 2 && path[1] == ':' && upper(path[0]) >= 'A' && upper(path[0]) <= 'Z';
}

std::string host_path(std::string_view path)
{
    std::string host(path);
    if (!has_drive(path) && host.find('\\') == std::string::npos)
        return host;
    if (::access(host.c_str(), F_OK) == 0)
        return host;
    host = with_mounted_directory(path);
    std::replace(host.begin(), host.end(), '\\', '/');
    return host;
}

} // namespace klv
