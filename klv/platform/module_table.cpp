#include "klv/platform/module_table.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <dlfcn.h>

namespace klv {

namespace {

constexpr const char* library_name = "klv006.dll";
constexpr const char* imaging_module = "libklv_imaging.so";

// Where the well-known optional libraries are looked for, beside the library.
struct known_module {
    std::string_view name;
    const char* file;
};
constexpr known_module known_modules[] = {
    {"ltkrn80n.dll", imaging_module},
    {"ltfil80n.dll", imaging_module},
    {"ltimg80n.dll", imaging_module},
};

struct module_entry {
    std::string name; ///< lower case, with extension
    std::string file; ///< the shared object, when it is one
    std::span<const module_symbol> symbols;
    void* object = nullptr;
    unsigned uses = 0;
    bool registered = false; ///< by RegisterModule or MapModule
};

// Held while the table is used. A shared object that is being opened may register modules of its own.
constinit std::recursive_mutex guard;

// Entries stay where they are, so that a handle is simply a position in the table: a number that fits 32
// bits and differs from every other handle of the process.
using module_list = std::vector<std::unique_ptr<module_entry>>;
constexpr std::uintptr_t first_handle = 0x10000000;
constexpr std::uintptr_t handle_step = 0x10000;

constexpr std::size_t program_index = 0;
constexpr std::size_t library_index = 1;

std::string program_file()
{
    char path[PATH_MAX];
    return realpath("/proc/self/exe", path) ? path : "";
}

std::string library_file()
{
    Dl_info info = {};
    char path[PATH_MAX];
    const bool known = dladdr(reinterpret_cast<const void*>(&library_instance), &info) != 0 && info.dli_fname;
    return known && realpath(info.dli_fname, path) ? path : program_file();
}

module_list make_module_list()
{
    module_list list;
    list.push_back(std::make_unique<module_entry>(module_entry{"", program_file(), {}, nullptr, 1, false}));
    list.push_back(
        std::make_unique<module_entry>(module_entry{library_name, library_file(), {}, nullptr, 1, false}));
    return list;
}

module_list& modules()
{
    static module_list list = make_module_list();
    return list;
}

HINSTANCE handle_of(std::size_t index)
{
    return reinterpret_cast<HINSTANCE>(first_handle + index * handle_step);
}

module_entry* entry_of(HINSTANCE module)
{
    const auto number = reinterpret_cast<std::uintptr_t>(module);
    const std::uintptr_t index = (number - first_handle) / handle_step;
    if (number < first_handle || index >= modules().size() || handle_of(index) != module)
        return nullptr;
    return modules()[index].get();
}

std::string normalized(const char* name)
{
    std::string result(name);
    for (char& c : result)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    if (result.find('.') == std::string::npos)
        result += ".dll";
    return result;
}

std::size_t find_name(const std::string& name)
{
    const auto found = std::ranges::find(modules(), name, [](const auto& entry) { return entry->name; });
    return static_cast<std::size_t>(found - modules().begin());
}

std::size_t find_or_add(const std::string& name)
{
    const std::size_t index = find_name(name);
    if (index == modules().size()) {
        modules().push_back(std::make_unique<module_entry>());
        modules().back()->name = name;
    }
    return index;
}

std::string beside_library(const std::string& file)
{
    if (file.find('/') != std::string::npos)
        return file;
    const std::string& library = modules()[library_index]->file;
    return library.substr(0, library.rfind('/') + 1) + file;
}

// The shared object that a name stands for when nobody registered it: a well-known one's, or one of the same
// name.
std::string default_file(const std::string& name)
{
    const auto* const known = std::ranges::find(known_modules, std::string_view(name), &known_module::name);
    if (known != std::end(known_modules))
        return known->file;
    return name.substr(0, name.rfind('.')) + ".so";
}

bool open_object(module_entry& entry)
{
    if (!entry.registered)
        entry.file = beside_library(default_file(entry.name));
    entry.object = dlopen(entry.file.c_str(), RTLD_NOW | RTLD_LOCAL);
    return entry.object != nullptr;
}

// Without an object of its own, a module is the program or the library: whatever is linked in.
FARPROC function_of(void* object, const char* name)
{
    void* const address = dlsym(object ? object : RTLD_DEFAULT, name);
    FARPROC function = nullptr;
    static_assert(sizeof function == sizeof address);
    std::memcpy(&function, &address, sizeof function);
    return function;
}

std::size_t load(const char* name)
{
    const std::size_t index = find_or_add(normalized(name));
    module_entry& entry = *modules()[index];
    const bool ready = entry.uses > 0 || !entry.symbols.empty() || open_object(entry);
    if (!ready)
        return modules().size();
    ++entry.uses;
    return index;
}

} // namespace

HINSTANCE LoadLibraryA(const char* name) noexcept
{
    if (!name || !*name)
        return nullptr;
    try {
        const std::scoped_lock lock(guard);
        const std::size_t index = load(name);
        return index < modules().size() ? handle_of(index) : nullptr;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

FARPROC GetProcAddress(HINSTANCE module, const char* name) noexcept
{
    const std::scoped_lock lock(guard);
    const module_entry* const entry = entry_of(module);
    if (!entry || !name || entry->uses == 0)
        return nullptr;
    if (entry->symbols.empty())
        return function_of(entry->object, name);
    const auto found = std::ranges::find(entry->symbols, std::string_view(name), &module_symbol::name);
    return found == entry->symbols.end() ? nullptr : found->function;
}

BOOL FreeLibrary(HINSTANCE module) noexcept
{
    const std::scoped_lock lock(guard);
    module_entry* const entry = entry_of(module);
    if (!entry || entry->uses == 0)
        return FALSE;
    const bool permanent = entry == modules()[program_index].get() || entry == modules()[library_index].get();
    if (permanent && entry->uses == 1)
        return TRUE;
    if (--entry->uses > 0)
        return TRUE;
    if (entry->object)
        dlclose(std::exchange(entry->object, nullptr));
    if (!entry->registered)
        entry->symbols = {};
    return TRUE;
}

HINSTANCE GetModuleHandleA(const char* name) noexcept
{
    if (!name)
        return handle_of(program_index);
    try {
        const std::scoped_lock lock(guard);
        const std::size_t index = find_name(normalized(name));
        return index < modules().size() && modules()[index]->uses > 0 ? handle_of(index) : nullptr;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

DWORD GetModuleFileNameA(HINSTANCE module, char* name, DWORD size) noexcept
{
    if (!name || size == 0)
        return 0;
    const std::scoped_lock lock(guard);
    const module_entry* const entry = entry_of(module ? module : handle_of(program_index));
    if (!entry) {
        *name = '\0';
        return 0;
    }
    const std::string& file = entry->file.empty() ? entry->name : entry->file;
    const std::size_t length = file.copy(name, size - std::size_t{1});
    name[length] = '\0';
    return static_cast<DWORD>(length);
}

HINSTANCE library_instance() noexcept { return handle_of(library_index); }

bool RegisterModule(const char* name, std::span<const module_symbol> symbols) noexcept
{
    try {
        const std::scoped_lock lock(guard);
        module_entry& entry = *modules()[find_or_add(normalized(name))];
        entry.symbols = symbols;
        entry.file.clear();
        entry.registered = true;
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

bool MapModule(const char* name, const char* file) noexcept
{
    try {
        const std::scoped_lock lock(guard);
        module_entry& entry = *modules()[find_or_add(normalized(name))];
        entry.symbols = {};
        entry.file = beside_library(file);
        entry.registered = true;
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

void UnregisterModule(const char* name) noexcept
{
    try {
        const std::scoped_lock lock(guard);
        const std::size_t index = find_name(normalized(name));
        if (index < modules().size())
            modules()[index]->registered = false;
        if (index < modules().size() && modules()[index]->uses == 0)
            modules()[index]->symbols = {};
    } catch (const std::bad_alloc&) {
        // The entry stays.
    }
}

} // namespace klv
