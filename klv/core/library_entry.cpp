#include "klv/core/library_entry.h"

#include "klv/core/string.h"
#include "klv/core/system.h"
#include "klv/platform/system/profile.h"

#include <cstdlib>
#include <string_view>

namespace klv {

namespace {

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

} // namespace

int DllMain(HINSTANCE instance, std::uint32_t, void*) noexcept
{
    vSYSTEM* const system = vSYSTEM::Pointer();
    system->SetInstance(instance);
    vSYSTEM::GetDefaultException().LoadMessages(instance);
    vSYSTEM::SetTraceLevel(trace_level_of_profile());
    vSYSTEM::HeapCheck(heap_check_of_profile());
    return 1;
}

int WEP(int) noexcept { return 1; }

} // namespace klv
