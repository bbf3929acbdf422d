#include "klv/streams/directory.h"

#include "klv/platform/system/directory.h"
#include "klv/platform/system/network.h"
#include "klv/platform/system/path.h"
#include "klv/streams/store_iterator.h"

#include <ctime>
#include <new>
#include <string>
#include <string_view>

namespace klv {

namespace {

constexpr char separator = '\\';
constexpr std::size_t root_length = 3; // "C:\"

bool ends_with_separator(std::string_view path)
{
    return !path.empty() && (path.back() == separator || path.back() == '/');
}

std::string_view without_separator(std::string_view path)
{
    return path.substr(0, path.size() - (ends_with_separator(path) ? 1 : 0));
}

// The name of a directory as a vDIRECTORY keeps it.
vSTRING directory_name(std::string_view path) { return vSTRING(without_separator(path)) + vCHAR(separator); }

bool same_letter(char a, char b) { return (a | 0x20) == (b | 0x20); }

// The share that a path on a connected drive lies on, with the rest of the path; else the path itself.
std::string network_name(std::string_view path)
{
    if (path.size() >= root_length && has_drive(path) && path[2] == separator) {
        for (const auto& disk : connected_disks())
            if (has_drive(disk.local_name) && same_letter(disk.local_name[0], path[0])
                && !disk.remote_name.empty())
                return disk.remote_name + std::string(path.substr(2));
    }
    return std::string(path);
}

vDATETIME date_of(std::time_t time)
{
    std::tm utc{};
    ::gmtime_r(&time, &utc);
    return {utc.tm_mday, utc.tm_mon + 1, utc.tm_year + 1900, utc.tm_hour, utc.tm_min, utc.tm_sec};
}

void list_entries(const std::string& pattern, fLIST& list)
{
    const auto place = pattern.substr(0, pattern.find_last_of("/\\") + 1);
    for (const auto& entry : find_files(pattern)) {
        if (entry.name == "." || entry.name == "..")
            continue;
        const bool directory = !entry.normal_file && can_enter_directory(place + entry.name);
        auto* item = new vSTOREITERATOR(vSTRING(std::string_view(entry.name)),
            directory ? vFILETYPE_DIRECTORY : vFILETYPE_FILE, date_of(entry.modified),
            static_cast<std::int32_t>(static_cast<std::uint32_t>(entry.size & UINT32_MAX)));
        if (item && !list.Append(*item))
            delete item;
    }
}

} // namespace

vDIRECTORY::vDIRECTORY(const vSTRING& path, std::uint32_t, int create) noexcept
    : vSTORAGE(path)
{
    try {
        const auto where = std::string(path.Null() ? current_directory() : path.View());
        if (create) {
            make_directory(where);
            change_directory(where);
        }
        name_ = directory_name(where);
    } catch (const std::bad_alloc&) {
        name_ = path;
    }
}

vDIRECTORY::~vDIRECTORY()
{
    while (auto* file = static_cast<vFILE*>(files_.Pop()))
        delete file;
}

vSTRING vDIRECTORY::GetName() noexcept
{
    try {
        return vSTRING(std::string_view(network_name(name_.View())));
    } catch (const std::bad_alloc&) {
        return name_;
    }
}

vSTRING vDIRECTORY::full_path(const vSTRING& name) noexcept
{
    const auto place = GetName();
    return ends_with_separator(place.View()) ? place + name : place + vCHAR(separator) + name;
}

vFILE* vDIRECTORY::CreateFileA(const vSTRING& name, std::uint32_t mode) noexcept
{
    auto* file = new vFILE(GetName() + name, mode);
    if (file && !files_.Push(*file)) {
        delete file;
        return nullptr;
    }
    return file;
}

vFILE* vDIRECTORY::OpenFile(const vSTRING& name, std::uint32_t mode) noexcept
{
    return CreateFileA(name, mode);
}
vSTREAM* vDIRECTORY::CreateStream(const vSTRING& name, std::uint32_t mode) noexcept
{
    return CreateFileA(name, mode);
}
vSTREAM* vDIRECTORY::OpenStream(const vSTRING& name, std::uint32_t mode) noexcept
{
    return CreateFileA(name, mode);
}

void vDIRECTORY::SelectElements(const vSTRING& pattern, fLIST* list) const noexcept
{
    if (!list)
        return;
    try {
        list_entries(std::string(pattern.View()), *list);
    } catch (const std::bad_alloc&) {
        return; // what has been found so far is the listing
    }
}

int vDIRECTORY::FileExists(const vSTRING& name) noexcept { return file_exists(full_path(name)()); }
int vDIRECTORY::RemoveFile(const vSTRING& name) noexcept { return remove_file(full_path(name)()); }

int vDIRECTORY::Attach() noexcept
{
    try {
        const auto name = name_.View();
        if (has_drive(name))
            change_drive(name[0]);
        return change_directory(std::string(name.size() > root_length ? without_separator(name) : name));
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

int vDIRECTORY::AttachToParent() noexcept
{
    try {
        if (!change_directory(".."))
            return 0;
        name_ = directory_name(current_directory());
        return 1;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

vSTRING vDIRECTORY::TempDirectory() noexcept
{
    try {
        const auto directory = temporary_directory();
        return directory.empty() ? vSTRING("c:\\") : vSTRING(std::string_view(directory));
    } catch (const std::bad_alloc&) {
        return vSTRING("c:\\");
    }
}

} // namespace klv
