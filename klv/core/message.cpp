#include "klv/core/message.h"

#include "klv/platform/host.h"

#include <algorithm>
#include <iterator>

namespace klv {

namespace {

struct button_set {
    int buttons;
    UINT style;
    int in_order[3];
};

constexpr button_set button_sets[] = {
    {message_button::ok, MB_OK, {message_button::ok}},
    {message_button::ok | message_button::cancel, MB_OKCANCEL, {message_button::ok, message_button::cancel}},
    {message_button::retry | message_button::cancel, MB_RETRYCANCEL,
        {message_button::retry, message_button::cancel}},
    {message_button::abort | message_button::retry | message_button::ignore, MB_ABORTRETRYIGNORE,
        {message_button::abort, message_button::retry, message_button::ignore}},
    {message_button::yes | message_button::no, MB_YESNO, {message_button::yes, message_button::no}},
    {message_button::yes | message_button::no | message_button::cancel, MB_YESNOCANCEL,
        {message_button::yes, message_button::no, message_button::cancel}},
};

constexpr UINT default_styles[] = {MB_DEFBUTTON1, MB_DEFBUTTON2, MB_DEFBUTTON3};

int button_of_answer(int answer) noexcept
{
    switch (answer) {
    case IDOK:
    case IDCLOSE:
        return message_button::ok;
    case IDCANCEL:
        return message_button::cancel;
    case IDABORT:
        return message_button::abort;
    case IDRETRY:
        return message_button::retry;
    case IDIGNORE:
        return message_button::ignore;
    case IDYES:
        return message_button::yes;
    case IDNO:
        return message_button::no;
    default:
        return 0;
    }
}

} // namespace

int vMESSAGE::Display(
    const char* text, const char* title, UINT icon, int buttons, int default_button) const noexcept
{
    const auto* const set = std::find_if(std::begin(button_sets), std::end(button_sets),
        [buttons](const button_set& candidate) { return candidate.buttons == buttons; });
    if (set == std::end(button_sets) || default_button == 0)
        return 0;
    const auto* const chosen = std::find(std::begin(set->in_order), std::end(set->in_order), default_button);
    if (chosen == std::end(set->in_order))
        return 0;
    const UINT modality = owner_ ? 0 : MB_SYSTEMMODAL;
    const UINT style = set->style | icon | default_styles[chosen - set->in_order] | modality;
    return button_of_answer(MessageBoxA(owner_, text, title, style));
}

int vMESSAGE::Info(const char* text, const char* title) const noexcept
{
    return Display(text, title, MB_ICONINFORMATION, message_button::ok, message_button::ok);
}

int vMESSAGE::Warning(const char* text, const char* title, int buttons, int default_button) const noexcept
{
    return Display(text, title, MB_ICONEXCLAMATION, buttons, default_button);
}

int vMESSAGE::Critical(const char* text, const char* title, int buttons, int default_button) const noexcept
{
    return Display(text, title, MB_ICONSTOP, buttons, default_button);
}

int vMESSAGE::Query(const char* text, const char* title, int buttons, int default_button) const noexcept
{
    return Display(text, title, MB_ICONQUESTION, buttons, default_button);
}

void vMESSAGE::Beep(short kind) noexcept { MessageBeep(static_cast<UINT>(static_cast<std::int32_t>(kind))); }

} // namespace klv
