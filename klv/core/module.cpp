#include "klv/core/module.h"

#include "klv/core/string.h"
#include "klv/core/system.h"
#include "klv/platform/module_table.h"

#include <string_view>

namespace klv {

namespace {

constexpr DWORD longest_module_name = 1000;

// What the next vMODULE takes.
struct prepared_module {
    HINSTANCE instance = nullptr;
    vMODULE** slot = nullptr;
};
constinit prepared_module prepared;

vSTRING* command_string = nullptr;

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

vMODULE::~vMODULE()
{
    delete command_string;
    command_string = nullptr;
}

HINSTANCE vMODULE::GetInstance() const noexcept { return instance_; }

void vMODULE::Prepare(HINSTANCE instance, vMODULE** slot, const char* command) noexcept
{
    prepared = {instance, slot};
    if (!command)
        return;
    delete command_string;
    command_string = new vSTRING(command);
}

vSTRING vMODULE::GetCommand() noexcept { return command_string ? *command_string : vSTRING(); }

vSTRING vMODULE::GetModulePath() const noexcept
{
    char* const name = vSYSTEM::GetLocalBuffer();
    const DWORD length = GetModuleFileNameA(GetInstance(), name, longest_module_name + 1);
    const std::string_view path(name, length);
    const std::size_t separator = path.find_last_of("\\/");
    return separator == std::string_view::npos ? vSTRING() : vSTRING(path.substr(0, separator));
}

} // namespace klv
