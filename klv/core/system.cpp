#include "klv/core/system.h"

#include "klv/core/library_entry.h"
#include "klv/core/library_strings.h"
#include "klv/platform/module_table.h"
#include "klv/platform/system/string_resources.h"

namespace klv {

namespace {

constexpr std::uint32_t process_attach = 1;

char scratch_buffer[vSYSTEM::buffer_size];
char local_buffer[vSYSTEM::buffer_size];

int exception_flag = 0;
std::uint16_t trace_level = 0;
int heap_check = 0;

// Null until the default exception exists: memory may run out before, and while it is being made.
DEFEXCEP* default_exception = nullptr;

// The load-time notification, for the shared library and for programs that the library is linked into.
[[maybe_unused]] const int notified = DllMain(library_instance(), process_attach, nullptr);

} // namespace

vSYSTEM::vSYSTEM() noexcept
    : vMODULE(library_instance())
{
    register_strings(library_instance(), library_strings());
    OpenRegistry();
}

vSYSTEM::~vSYSTEM() { CloseRegistry(); }

vSYSTEM* vSYSTEM::Pointer() noexcept
{
    static vSYSTEM system;
    return &system;
}

char* vSYSTEM::GetBuffer() noexcept { return scratch_buffer; }
char* vSYSTEM::GetLocalBuffer() noexcept { return local_buffer; }

DEFEXCEP& vSYSTEM::GetDefaultException() noexcept
{
    static DEFEXCEP exception;
    static const bool known = (default_exception = &exception) != nullptr;
    static_cast<void>(known);
    return exception;
}

int vSYSTEM::NewFailureException(unsigned int) noexcept
{
    if (default_exception)
        default_exception->ReleaseReserve();
    exception_flag = 1;
    return 0;
}

int vSYSTEM::GetExceptionFlag() noexcept { return exception_flag; }
void vSYSTEM::SetExceptionFlag(int flag) noexcept { exception_flag = flag; }
std::uint16_t vSYSTEM::GetTraceLevel() noexcept { return trace_level; }
void vSYSTEM::SetTraceLevel(std::uint16_t level) noexcept { trace_level = level; }
int vSYSTEM::CheckHeap() noexcept { return heap_check; }
void vSYSTEM::HeapCheck(int on) noexcept { heap_check = on; }

} // namespace klv
