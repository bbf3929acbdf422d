#pragma once

#include "klv/base/types.h"

/// A small table of the windows of this process: names, places, order and messages. Nothing is shown; it is
/// what the library needs to find and address the windows of an application.
namespace klv {

using WNDPROC = LRESULT (*)(HWND, UINT, WPARAM, LPARAM);
using WNDENUMPROC = BOOL (*)(HWND, LPARAM);

struct window_description {
    const char* class_name = "";
    const char* title = "";
    DWORD extended_style = 0;
    RECT client_area = {}; ///< in screen coordinates
    HWND parent = nullptr; ///< null for a top-level window
    WNDPROC procedure = nullptr; ///< null answers every message with 0
};

inline constexpr DWORD WS_EX_ACCEPTFILES = 0x00000010;
inline constexpr UINT WM_CLOSE = 0x0010;
inline constexpr UINT WM_NCHITTEST = 0x0084;
inline constexpr UINT WM_DROPFILES = 0x0233;
inline constexpr INT GWL_EXSTYLE = -20;
inline constexpr UINT GW_HWNDFIRST = 0;
inline constexpr UINT GW_HWNDLAST = 1;
inline constexpr UINT GW_HWNDNEXT = 2;
inline constexpr UINT GW_HWNDPREV = 3;
inline constexpr UINT GW_CHILD = 5;

/// Adds a window on top of its siblings. \return null when memory is out or the parent is no window
[[nodiscard]] HWND create_window(const window_description& description) noexcept;
/// Removes the window and those below it. \return FALSE when it is none
BOOL DestroyWindow(HWND window) noexcept;
[[nodiscard]] BOOL IsWindow(HWND window) noexcept;

/// The topmost child; of the top-level windows for null.
[[nodiscard]] HWND GetTopWindow(HWND parent) noexcept;
/// The window in that relation (GW_…), or null.
[[nodiscard]] HWND GetWindow(HWND window, UINT relation) noexcept;
/// Calls procedure for every window below parent, depth first, until it answers FALSE.
BOOL EnumChildWindows(HWND parent, WNDENUMPROC procedure, LPARAM parameter) noexcept;
[[nodiscard]] HWND GetActiveWindow() noexcept;
HWND SetActiveWindow(HWND window) noexcept;

/// These copy a NUL-terminated text cut to size. \return its length
int GetClassNameA(HWND window, char* name, int size) noexcept;
int GetWindowTextA(HWND window, char* title, int size) noexcept;
/// GWL_EXSTYLE only; 0 for anything else.
[[nodiscard]] LONG GetWindowLongA(HWND window, INT index) noexcept;
/// The client area, its top-left corner at (0, 0).
BOOL GetClientRect(HWND window, RECT* area) noexcept;
BOOL ClientToScreen(HWND window, POINT* p) noexcept;

/// The number of a message name, the same for every caller of the process: 0xC000 to 0xFFFF; 0 when there
/// are no more.
[[nodiscard]] UINT RegisterWindowMessageA(const char* name) noexcept;
/// Calls the window's procedure. \return its answer; 0 when it is no window
LRESULT SendMessageA(HWND window, UINT message, WPARAM wparam, LPARAM lparam) noexcept;

} // namespace klv
