#include "klv/platform/system/windows.h"

#include "klv/base/wrapping.h"
#include "klv/platform/system/ini_file.h"

#include <algorithm>
#include <new>
#include <string>
#include <string_view>
#include <vector>

namespace klv {

namespace {

struct window_entry {
    HWND handle;
    HWND parent;
    std::string class_name;
    std::string title;
    DWORD extended_style;
    RECT client_area;
    WNDPROC procedure;
};

struct window_table {
    std::vector<window_entry> windows; ///< topmost first
    std::vector<std::string> messages;
    std::uint32_t last_handle = 0;
    HWND active = nullptr;
};

constexpr std::uint32_t handle_step = 4;
constexpr std::uint32_t first_handle = 0x00010000;
constexpr std::size_t first_message = 0xC000;
constexpr std::size_t last_message = 0xFFFF;

window_table& table()
{
    static window_table the_table;
    return the_table;
}

using window_position = std::vector<window_entry>::iterator;

window_position position_of(HWND window) noexcept
{
    return std::ranges::find(table().windows, window, &window_entry::handle);
}

window_entry* entry_of(HWND window) noexcept
{
    const auto found = window ? position_of(window) : table().windows.end();
    return found == table().windows.end() ? nullptr : &*found;
}

// The first window below parent in [from, to), null when there is none.
template <class Iterator> HWND first_below(HWND parent, Iterator from, Iterator to) noexcept
{
    const auto found = std::find_if(from, to, [parent](const window_entry& w) { return w.parent == parent; });
    return found == to ? nullptr : found->handle;
}

void collect_below(HWND parent, std::vector<HWND>& found)
{
    for (const window_entry& w : table().windows)
        if (w.parent == parent) {
            found.push_back(w.handle);
            collect_below(w.handle, found);
        }
}

int copy_text(std::string_view text, char* out, int size) noexcept
{
    if (!out || size <= 0)
        return 0;
    const std::size_t length = text.copy(out, static_cast<std::size_t>(size) - 1);
    out[length] = '\0';
    return static_cast<int>(length);
}

std::string text_of(const char* text) { return text ? text : ""; }

} // namespace

HWND create_window(const window_description& description) noexcept
{
    if (description.parent && !entry_of(description.parent))
        return nullptr;
    try {
        window_table& t = table();
        const std::uint32_t number = std::max(t.last_handle + handle_step, first_handle);
        const auto handle = reinterpret_cast<HWND>(static_cast<std::uintptr_t>(number));
        t.windows.insert(t.windows.begin(),
            {handle, description.parent, text_of(description.class_name), text_of(description.title),
                description.extended_style, description.client_area, description.procedure});
        t.last_handle = number;
        return handle;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

BOOL DestroyWindow(HWND window) noexcept
{
    if (!entry_of(window))
        return FALSE;
    while (const HWND child = GetTopWindow(window))
        DestroyWindow(child);
    table().windows.erase(position_of(window));
    if (table().active == window)
        table().active = nullptr;
    return TRUE;
}

BOOL IsWindow(HWND window) noexcept { return entry_of(window) != nullptr; }

HWND GetTopWindow(HWND parent) noexcept
{
    return first_below(parent, table().windows.begin(), table().windows.end());
}

HWND GetWindow(HWND window, UINT relation) noexcept
{
    const window_entry* const entry = entry_of(window);
    if (!entry)
        return nullptr;
    auto& windows = table().windows;
    const auto at = position_of(window);
    switch (relation) {
    case GW_HWNDFIRST:
        return GetTopWindow(entry->parent);
    case GW_HWNDLAST:
        return first_below(entry->parent, windows.rbegin(), windows.rend());
    case GW_HWNDNEXT:
        return first_below(entry->parent, at + 1, windows.end());
    case GW_HWNDPREV:
        return first_below(entry->parent, std::make_reverse_iterator(at), windows.rend());
    case GW_CHILD:
        return GetTopWindow(window);
    default:
        return nullptr;
    }
}

BOOL EnumChildWindows(HWND parent, WNDENUMPROC procedure, LPARAM parameter) noexcept
{
    try {
        // The procedure may create and destroy windows.
        std::vector<HWND> found;
        collect_below(parent, found);
        for (const HWND child : found)
            if (IsWindow(child) && !procedure(child, parameter))
                return FALSE;
        return TRUE;
    } catch (const std::bad_alloc&) {
        return FALSE;
    }
}

HWND GetActiveWindow() noexcept { return table().active; }

HWND SetActiveWindow(HWND window) noexcept
{
    const HWND before = table().active;
    table().active = IsWindow(window) ? window : nullptr;
    return before;
}

int GetClassNameA(HWND window, char* name, int size) noexcept
{
    const window_entry* const entry = entry_of(window);
    return copy_text(entry ? entry->class_name : std::string_view(), name, size);
}

int GetWindowTextA(HWND window, char* title, int size) noexcept
{
    const window_entry* const entry = entry_of(window);
    return copy_text(entry ? entry->title : std::string_view(), title, size);
}

BOOL SetWindowTextA(HWND window, const char* title) noexcept
{
    window_entry* const entry = entry_of(window);
    if (!entry)
        return FALSE;
    try {
        entry->title = text_of(title);
        return TRUE;
    } catch (const std::bad_alloc&) {
        return FALSE;
    }
}

LONG GetWindowLongA(HWND window, INT index) noexcept
{
    const window_entry* const entry = entry_of(window);
    return entry && index == GWL_EXSTYLE ? static_cast<LONG>(entry->extended_style) : 0;
}

BOOL GetClientRect(HWND window, RECT* area) noexcept
{
    const window_entry* const entry = entry_of(window);
    if (!entry || !area)
        return FALSE;
    const RECT& at = entry->client_area;
    *area = {0, 0, wrap_sub(at.right, at.left), wrap_sub(at.bottom, at.top)};
    return TRUE;
}

BOOL ClientToScreen(HWND window, POINT* p) noexcept
{
    const window_entry* const entry = entry_of(window);
    if (!entry || !p)
        return FALSE;
    *p = {wrap_add(p->x, entry->client_area.left), wrap_add(p->y, entry->client_area.top)};
    return TRUE;
}

UINT RegisterWindowMessageA(const char* name) noexcept
{
    if (!name)
        return 0;
    auto& messages = table().messages;
    const auto known = std::ranges::find_if(
        messages, [name](const std::string& message) { return equal_names(message, name); });
    const auto number = first_message + static_cast<std::size_t>(known - messages.begin());
    if (number > last_message)
        return 0;
    try {
        if (known == messages.end())
            messages.emplace_back(name);
        return static_cast<UINT>(number);
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

LRESULT SendMessageA(HWND window, UINT message, WPARAM wparam, LPARAM lparam) noexcept
{
    const window_entry* const entry = entry_of(window);
    return entry && entry->procedure ? entry->procedure(window, message, wparam, lparam) : 0;
}

} // namespace klv
