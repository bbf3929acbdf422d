#include "klv/core/system.h"

#include "klv/core/library_strings.h"
#include "klv/platform/module_table.h"
#include "klv/platform/system/profile.h"
#include "klv/platform/system/string_resources.h"

#include <atomic>

namespace klv {

namespace {

thread_local char scratch_buffer[vSYSTEM::buffer_size];
thread_local char local_buffer[vSYSTEM::buffer_size];

constexpr const char* profile_section = "VirtualMachine";

std::uint16_t trace_level_of_profile() noexcept
{
    constexpr DWORD longest = 3;
    char text[longest + 1];
    GetProfileStringA(profile_section, "TraceLevel", "0", text, sizeof text);
    return static_cast<std::uint16_t>(vSTRING(text).Int() & 0xFFFF);
}

bool heap_check_of_profile() noexcept
{
    constexpr DWORD longest = 7;
    char text[longest + 1];
    GetProfileStringA(profile_section, "CheckHeap", "No", text, sizeof text);
    vSTRING answer(text);
    answer.ConvertUpper();
    return answer == "YES";
}

struct user_settings {
    std::atomic<std::uint16_t> trace_level = trace_level_of_profile();
    std::atomic<int> heap_check = heap_check_of_profile();
};

user_settings& settings() noexcept
{
    static user_settings read_when_first_asked;
    return read_when_first_asked;
}

constinit std::atomic<int> exception_flag = 0;

// Null until the default exception exists: memory may run out before, and while it is being made.
constinit std::atomic<DEFEXCEP*> default_exception = nullptr;

// The reserve must be there before memory runs out. It is memory and nothing else: what opens files or
// blocks shared with other processes waits until it is asked for.
[[maybe_unused]] const DEFEXCEP& made_at_load = vSYSTEM::GetDefaultException();

} // namespace

vSYSTEM::vSYSTEM() noexcept
    : vMODULE(library_instance())
{
    register_strings(library_instance(), library_strings());
}

vSYSTEM* vSYSTEM::Pointer() noexcept
{
    static vSYSTEM system;
    return &system;
}

char* vSYSTEM::GetBuffer() noexcept { return scratch_buffer; }
char* vSYSTEM::GetLocalBuffer() noexcept { return local_buffer; }

DEFEXCEP& vSYSTEM::GetDefaultException() noexcept
{
    // Never destroyed: memory may still run out while other static objects are.
    alignas(DEFEXCEP) static std::byte place[sizeof(DEFEXCEP)];
    static DEFEXCEP* const exception = [] {
        auto* const made = ::new (place) DEFEXCEP;
        made->LoadMessages(Pointer()->GetInstance());
        default_exception = made;
        return made;
    }();
    return *exception;
}

int vSYSTEM::NewFailureException(unsigned int) noexcept
{
    if (DEFEXCEP* const exception = default_exception)
        exception->ReleaseReserve();
    exception_flag = 1;
    return 0;
}

void vMemFailed(std::uint32_t n) noexcept { vSYSTEM::NewFailureException(n); }

int vSYSTEM::GetExceptionFlag() noexcept { return exception_flag; }
void vSYSTEM::SetExceptionFlag(int flag) noexcept { exception_flag = flag; }

void vSYSTEM::ReadSettings() noexcept
{
    SetTraceLevel(trace_level_of_profile());
    HeapCheck(heap_check_of_profile());
}

std::uint16_t vSYSTEM::GetTraceLevel() noexcept { return settings().trace_level; }
void vSYSTEM::SetTraceLevel(std::uint16_t level) noexcept { settings().trace_level = level; }
int vSYSTEM::CheckHeap() noexcept { return settings().heap_check; }
void vSYSTEM::HeapCheck(int on) noexcept { settings().heap_check = on; }

} // namespace klv
