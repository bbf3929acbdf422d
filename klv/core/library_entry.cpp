#include "klv/core/library_entry.h"

#include "klv/core/system.h"

namespace klv {

int DllMain(HINSTANCE instance, std::uint32_t, void*) noexcept
{
    vSYSTEM::Pointer()->SetInstance(instance);
    vSYSTEM::GetDefaultException().LoadMessages(instance);
    vSYSTEM::ReadSettings();
    return 1;
}

int WEP(int) noexcept { return 1; }

} // namespace klv
