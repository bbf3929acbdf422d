#pragma once

#include "klv/base/types.h"

/// The one seam to the outside world: message boxes, sounds, debugger output and the Escape key.
namespace klv {

/// What surrounds the library. This one is headless: a message box becomes one line on standard error and
/// gets its default answer, debugger output is dropped unless the environment variable KLV_DEBUG is set
/// (then it goes to standard error), Escape is never pressed. Applications and tests derive their own; every
/// thread that uses the library calls it.
class host {
public:
    virtual ~host() = default;

    /// Shows a box. \return an ID… value of message_box_answer, 0 when it could not be shown
    virtual int message_box(HWND owner, const char* text, const char* caption, UINT style);
    virtual void beep(UINT kind);
    virtual void debug_output(const char* line);
    /// \return true when the user has pressed Escape; asking does not take the key away
    virtual bool escape_pressed();
};

[[nodiscard]] host& current_host() noexcept;
/// Makes replacement the host; null restores the headless one. The caller keeps it alive.
/// \return the host before, null for the headless one
host* install_host(host* replacement) noexcept;

// ---- Message boxes -------------------------------------------------------------------------------------

inline constexpr UINT MB_OK = 0x0000;
inline constexpr UINT MB_OKCANCEL = 0x0001;
inline constexpr UINT MB_ABORTRETRYIGNORE = 0x0002;
inline constexpr UINT MB_YESNOCANCEL = 0x0003;
inline constexpr UINT MB_YESNO = 0x0004;
inline constexpr UINT MB_RETRYCANCEL = 0x0005;
inline constexpr UINT MB_TYPEMASK = 0x000F;
inline constexpr UINT MB_ICONHAND = 0x0010;
inline constexpr UINT MB_ICONSTOP = MB_ICONHAND;
inline constexpr UINT MB_ICONQUESTION = 0x0020;
inline constexpr UINT MB_ICONEXCLAMATION = 0x0030;
inline constexpr UINT MB_ICONASTERISK = 0x0040;
inline constexpr UINT MB_ICONINFORMATION = MB_ICONASTERISK;
inline constexpr UINT MB_ICONMASK = 0x00F0;
inline constexpr UINT MB_DEFBUTTON1 = 0x0000;
inline constexpr UINT MB_DEFBUTTON2 = 0x0100;
inline constexpr UINT MB_DEFBUTTON3 = 0x0200;
inline constexpr UINT MB_DEFMASK = 0x0F00;
inline constexpr UINT MB_SYSTEMMODAL = 0x1000;
inline constexpr UINT MB_TASKMODAL = 0x2000;

inline constexpr int IDOK = 1;
inline constexpr int IDCANCEL = 2;
inline constexpr int IDABORT = 3;
inline constexpr int IDRETRY = 4;
inline constexpr int IDIGNORE = 5;
inline constexpr int IDYES = 6;
inline constexpr int IDNO = 7;
inline constexpr int IDCLOSE = 8;

/// The answer that the style's default button gives.
[[nodiscard]] int default_answer(UINT style) noexcept;

/// These ask the current host. What a host throws is taken as a failure.
int MessageBoxA(HWND owner, const char* text, const char* caption, UINT style) noexcept;
BOOL MessageBeep(UINT kind) noexcept;
void OutputDebugStringA(const char* line) noexcept;
[[nodiscard]] bool escape_pressed() noexcept;

} // namespace klv
