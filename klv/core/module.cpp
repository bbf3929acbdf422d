#include "klv/core/module.h"

#include "klv/core/string.h"
#include "klv/core/system.h"
#include "klv/platform/module_table.h"

#include <mutex>
#include <string_view>

namespace klv {

namespace {

constexpr DWORD longest_module_name = 1000;

// What the next vMODULE of this thread takes.
struct prepared_module {
    HINSTANCE instance = nullptr;
    vMODULE** slot = nullptr;
};
constinit thread_local prepared_module prepared;

constinit std::mutex command_guard;
vSTRING* command_string = nullptr;

// command null: the process has none.
void set_command(const char* command) noexcept
{
    const std::scoped_lock lock(command_guard);
    delete command_string;
    command_string = command ? new vSTRING(command) : nullptr;
}

} // namespace

vMODULE::vMODULE() noexcept
    : instance_(prepared.instance)
{
    if (prepared.slot)
        *prepared.slot = this;
    prepared = {};
}

vMODULE::vMODULE(HINSTANCE instance) noexcept
    : instance_(instance)
{
}

vMODULE::vMODULE(const vMODULE& other) noexcept
    : vOBJECT(other)
    , instance_(other.instance_)
{
}

vMODULE& vMODULE::operator=(const vMODULE& other) noexcept
{
    instance_ = other.instance_;
    return *this;
}

vMODULE::~vMODULE() { set_command(nullptr); }

HINSTANCE vMODULE::GetInstance() const noexcept { return instance_; }

void vMODULE::Prepare(HINSTANCE instance, vMODULE** slot, const char* command) noexcept
{
    prepared = {instance, slot};
    if (command)
        set_command(command);
}

vSTRING vMODULE::GetCommand() noexcept
{
    const std::scoped_lock lock(command_guard);
    return command_string ? *command_string : vSTRING();
}

vSTRING vMODULE::GetModulePath() const noexcept
{
    char* const name = vSYSTEM::GetLocalBuffer();
    const DWORD length = GetModuleFileNameA(GetInstance(), name, longest_module_name + 1);
    const std::string_view path(name, length);
    const std::size_t separator = path.find_last_of("\\/");
    return separator == std::string_view::npos ? vSTRING() : vSTRING(path.substr(0, separator));
}

} // namespace klv
