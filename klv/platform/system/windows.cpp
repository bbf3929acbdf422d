#include "klv/platform/system/windows.h"

#include "klv/base/wrapping.h"
#include "klv/platform/system/ini_file.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <string>
#include <string_view>
#include <utility>
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

constexpr std::uint32_t handle_step = 4;
constexpr std::uint32_t first_handle = 0x00010000;
constexpr std::size_t first_message = 0xC000;
constexpr std::size_t last_message = 0xFFFF;

int copy_text(std::string_view text, char* out, int size) noexcept
{
    if (!out || size <= 0)
        return 0;
    const std::size_t length = text.copy(out, static_cast<std::size_t>(size) - 1);
    out[length] = '\0';
    return static_cast<int>(length);
}

std::string text_of(const char* text) { return text ? text : ""; }

struct window_table {
    std::mutex guard;
    std::vector<window_entry> windows; ///< topmost first
    std::vector<std::string> messages;
    std::uint32_t last_handle = 0;
    HWND active = nullptr;

    auto position_of(HWND window) noexcept
    {
        return std::ranges::find(windows, window, &window_entry::handle);
    }
    window_entry* entry_of(HWND window) noexcept
    {
        const auto found = window ? position_of(window) : windows.end();
        return found == windows.end() ? nullptr : &*found;
    }
    HWND top_below(HWND parent) noexcept { return first_below(parent, windows.begin(), windows.end()); }
    HWND related(HWND window, UINT relation) noexcept;
    void collect_below(HWND parent, std::vector<HWND>& found);
    HWND add(const window_description& description);
    void remove(HWND window) noexcept;

private:
    // The first window below parent in [from, to), null when there is none.
    template <class Iterator> static HWND first_below(HWND parent, Iterator from, Iterator to) noexcept
    {
        const auto found
            = std::find_if(from, to, [parent](const window_entry& w) { return w.parent == parent; });
        return found == to ? nullptr : found->handle;
    }
};

HWND window_table::related(HWND window, UINT relation) noexcept
{
    const window_entry* const entry = entry_of(window);
    if (!entry)
        return nullptr;
    const auto at = position_of(window);
    switch (relation) {
    case GW_HWNDFIRST:
        return top_below(entry->parent);
    case GW_HWNDLAST:
        return first_below(entry->parent, windows.rbegin(), windows.rend());
    case GW_HWNDNEXT:
        return first_below(entry->parent, at + 1, windows.end());
    case GW_HWNDPREV:
        return first_below(entry->parent, std::make_reverse_iterator(at), windows.rend());
    case GW_CHILD:
        return top_below(window);
    default:
        return nullptr;
    }
}

void window_table::collect_below(HWND parent, std::vector<HWND>& found)
{
    for (const window_entry& w : windows)
        if (w.parent == parent) {
            found.push_back(w.handle);
            collect_below(w.handle, found);
        }
}

HWND window_table::add(const window_description& description)
{
    const std::uint32_t number = std::max(last_handle + handle_step, first_handle);
    const auto handle = reinterpret_cast<HWND>(static_cast<std::uintptr_t>(number));
    windows.insert(windows.begin(),
        {handle, description.parent, text_of(description.class_name), text_of(description.title),
            description.extended_style, description.client_area, description.procedure});
    last_handle = number;
    return handle;
}

void window_table::remove(HWND window) noexcept
{
    while (const HWND child = top_below(window))
        remove(child);
    windows.erase(position_of(window));
    if (active == window)
        active = nullptr;
}

window_table& table()
{
    static window_table the_table;
    return the_table;
}

/// What work makes of the window table, which is this thread's alone meanwhile. Procedures of windows are
/// called outside: they use the table themselves.
template <class Work> auto with_table(Work work)
{
    window_table& t = table();
    const std::scoped_lock lock(t.guard);
    return work(t);
}

} // namespace

HWND create_window(const window_description& description) noexcept
{
    try {
        return with_table([&](window_table& t) -> HWND {
            const bool misplaced = description.parent && !t.entry_of(description.parent);
            return misplaced ? nullptr : t.add(description);
        });
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

BOOL DestroyWindow(HWND window) noexcept
{
    return with_table([&](window_table& t) {
        const bool known = t.entry_of(window) != nullptr;
        if (known)
            t.remove(window);
        return BOOL{known};
    });
}

BOOL IsWindow(HWND window) noexcept
{
    return with_table([&](window_table& t) { return BOOL{t.entry_of(window) != nullptr}; });
}

HWND GetTopWindow(HWND parent) noexcept
{
    return with_table([&](window_table& t) { return t.top_below(parent); });
}

HWND GetWindow(HWND window, UINT relation) noexcept
{
    return with_table([&](window_table& t) { return t.related(window, relation); });
}

BOOL EnumChildWindows(HWND parent, WNDENUMPROC procedure, LPARAM parameter) noexcept
{
    try {
        // The procedure may create and destroy windows.
        std::vector<HWND> found;
        with_table([&](window_table& t) { t.collect_below(parent, found); });
        for (const HWND child : found)
            if (IsWindow(child) && !procedure(child, parameter))
                return FALSE;
        return TRUE;
    } catch (const std::bad_alloc&) {
        return FALSE;
    }
}

HWND GetActiveWindow() noexcept
{
    return with_table([](window_table& t) { return t.active; });
}

HWND SetActiveWindow(HWND window) noexcept
{
    return with_table(
        [&](window_table& t) { return std::exchange(t.active, t.entry_of(window) ? window : nullptr); });
}

int GetClassNameA(HWND window, char* name, int size) noexcept
{
    return with_table([&](window_table& t) {
        const window_entry* const entry = t.entry_of(window);
        return copy_text(entry ? entry->class_name : std::string_view(), name, size);
    });
}

int GetWindowTextA(HWND window, char* title, int size) noexcept
{
    return with_table([&](window_table& t) {
        const window_entry* const entry = t.entry_of(window);
        return copy_text(entry ? entry->title : std::string_view(), title, size);
    });
}

LONG GetWindowLongA(HWND window, INT index) noexcept
{
    return with_table([&](window_table& t) {
        const window_entry* const entry = t.entry_of(window);
        return entry && index == GWL_EXSTYLE ? static_cast<LONG>(entry->extended_style) : 0;
    });
}

BOOL GetClientRect(HWND window, RECT* area) noexcept
{
    return with_table([&](window_table& t) {
        const window_entry* const entry = t.entry_of(window);
        if (!entry || !area)
            return FALSE;
        const RECT& at = entry->client_area;
        *area = {0, 0, wrap_sub(at.right, at.left), wrap_sub(at.bottom, at.top)};
        return TRUE;
    });
}

BOOL ClientToScreen(HWND window, POINT* p) noexcept
{
    return with_table([&](window_table& t) {
        const window_entry* const entry = t.entry_of(window);
        if (!entry || !p)
            return FALSE;
        *p = {wrap_add(p->x, entry->client_area.left), wrap_add(p->y, entry->client_area.top)};
        return TRUE;
    });
}

UINT RegisterWindowMessageA(const char* name) noexcept
{
    if (!name)
        return 0;
    try {
        return with_table([name](window_table& t) {
            const auto known = std::ranges::find_if(
                t.messages, [name](const std::string& message) { return equal_names(message, name); });
            const auto number = first_message + static_cast<std::size_t>(known - t.messages.begin());
            if (number > last_message)
                return UINT{0};
            if (known == t.messages.end())
                t.messages.emplace_back(name);
            return static_cast<UINT>(number);
        });
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

LRESULT SendMessageA(HWND window, UINT message, WPARAM wparam, LPARAM lparam) noexcept
{
    const WNDPROC procedure = with_table([&](window_table& t) -> WNDPROC {
        const window_entry* const entry = t.entry_of(window);
        return entry ? entry->procedure : nullptr;
    });
    return procedure ? procedure(window, message, wparam, lparam) : 0;
}

} // namespace klv
