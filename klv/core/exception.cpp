#include "klv/core/exception.h"

#include "klv/base/memory.h"
#include "klv/core/library_strings.h"
#include "klv/core/system.h"
#include "klv/platform/host.h"
#include "klv/platform/system/global_memory.h"
#include "klv/platform/system/windows.h"

namespace klv {

namespace {

constexpr int longest_caption = 1000;

char* empty_message() noexcept
{
    auto* const text = static_cast<char*>(vMemAlloc(DEFEXCEP::message_size));
    if (text)
        *text = '\0';
    return text;
}

void load_message(HINSTANCE instance, UINT id, char* text) noexcept
{
    if (text)
        LoadStringA(instance, id, text, DEFEXCEP::message_size);
}

} // namespace

void* vEXCEPTION::operator new(std::size_t size) noexcept { return GlobalAlloc(GPTR, size); }

void vEXCEPTION::operator delete(void* block) noexcept { GlobalFree(static_cast<HGLOBAL>(block)); }

DEFEXCEP::DEFEXCEP() noexcept
    : reserve_(vMemAlloc(reserve_size))
    , first_message_(empty_message())
    , second_message_(empty_message())
{
}

DEFEXCEP::~DEFEXCEP()
{
    vMemFree(reserve_);
    vMemFree(first_message_);
    vMemFree(second_message_);
}

void DEFEXCEP::LoadMessages(HINSTANCE instance) noexcept
{
    load_message(instance, library_string::out_of_memory, second_message_);
    load_message(instance, library_string::nearly_out_of_memory, first_message_);
}

void DEFEXCEP::ReleaseReserve() noexcept { vMemFree(reserve_.exchange(nullptr)); }

int DEFEXCEP::HandleException(HWND w) noexcept
{
    char* const caption = vSYSTEM::GetBuffer();
    GetWindowTextA(w, caption, longest_caption + 1);

    const char* const first = first_message_;
    const char* const message = first ? first : second_message_;
    const int answer = MessageBoxA(w, message ? message : "", caption, MB_SYSTEMMODAL | MB_ICONSTOP);
    vMemFree(first_message_.exchange(nullptr));
    if (answer != IDOK)
        return 0;
    vSYSTEM::SetExceptionFlag(0);
    return 1;
}

} // namespace klv
