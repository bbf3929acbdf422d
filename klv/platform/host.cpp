#include "klv/platform/host.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace klv {

namespace {

std::atomic<host*> installed = nullptr;

// Texts come in the ANSI code page and must stay on one line of a terminal that expects UTF-8.
std::string one_line(const char* text)
{
    std::string line;
    for (const char c : std::string_view(text ? text : "")) {
        const auto code = static_cast<std::uint8_t>(c);
        if (code < 0x20 || code == 0x7F) {
            line += ' ';
        } else if (code < 0x80) {
            line += c;
        } else {
            line += static_cast<char>(0xC0 | code >> 6);
            line += static_cast<char>(0x80 | (code & 0x3F));
        }
    }
    return line;
}

} // namespace

int host::message_box(HWND, const char* text, const char* caption, UINT style)
{
    std::string line = one_line(caption);
    if (!line.empty())
        line += ": ";
    line += one_line(text);
    line += '\n';
    std::fputs(line.c_str(), stderr);
    return default_answer(style);
}

void host::beep(UINT) { }

void host::debug_output(const char* line)
{
    if (std::getenv("KLV_DEBUG"))
        std::fputs((one_line(line) + '\n').c_str(), stderr);
}

bool host::escape_pressed() { return false; }

host& current_host() noexcept
{
    static host headless;
    host* const replacement = installed;
    return replacement ? *replacement : headless;
}

host* install_host(host* replacement) noexcept { return installed.exchange(replacement); }

int default_answer(UINT style) noexcept
{
    constexpr int answers[][3] = {
        {IDOK, IDOK, IDOK},
        {IDOK, IDCANCEL, IDOK},
        {IDABORT, IDRETRY, IDIGNORE},
        {IDYES, IDNO, IDCANCEL},
        {IDYES, IDNO, IDYES},
        {IDRETRY, IDCANCEL, IDRETRY},
    };
    const UINT type = style & MB_TYPEMASK;
    const UINT position = (style & MB_DEFMASK) / MB_DEFBUTTON2;
    if (type >= std::size(answers) || position >= std::size(answers[0]))
        return IDOK;
    return answers[type][position];
}

int MessageBoxA(HWND owner, const char* text, const char* caption, UINT style) noexcept
{
    try {
        return current_host().message_box(owner, text, caption, style);
    } catch (...) {
        return 0;
    }
}

BOOL MessageBeep(UINT kind) noexcept
{
    try {
        current_host().beep(kind);
        return TRUE;
    } catch (...) {
        return FALSE;
    }
}

void OutputDebugStringA(const char* line) noexcept
{
    try {
        current_host().debug_output(line);
    } catch (...) {
        // Diagnostics must not disturb the work that they report on.
    }
}

bool escape_pressed() noexcept
{
    try {
        return current_host().escape_pressed();
    } catch (...) {
        return false;
    }
}

} // namespace klv
