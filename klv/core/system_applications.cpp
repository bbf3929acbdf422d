#include "klv/base/memory.h"
#include "klv/core/system.h"
#include "klv/platform/system/global_memory.h"
#include "klv/platform/system/shared_memory.h"
#include "klv/platform/system/windows.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <span>
#include <string_view>
#include <vector>

namespace klv {

namespace {

constexpr std::size_t longest_class_name = 500;
constexpr std::size_t longest_title = 500;
constexpr LRESULT family_answer = 0x0B0B0B0B;

// ---- The registry of running applications, shared by all of them -----------------------------------

// Handles are numbers that fit 32 bits, so that every process reads the same.
struct application_entry {
    std::uint32_t instance;
    std::uint32_t windows[2];
};
static_assert(sizeof(application_entry) == 12);

constexpr std::size_t most_applications = 10;

template <class Handle> std::uint32_t number_of(Handle handle) noexcept
{
    const auto number = reinterpret_cast<std::uintptr_t>(handle);
    return number <= UINT32_MAX ? static_cast<std::uint32_t>(number) : 0;
}

template <class Handle> Handle handle_of(std::uint32_t number) noexcept
{
    return reinterpret_cast<Handle>(static_cast<std::uintptr_t>(number));
}

// ---- What this process knows -----------------------------------------------------------------------

struct known_window {
    vSTRING class_name;
    HWND window;
};

struct application_state {
    std::mutex guard;
    shared_memory registry;
    std::vector<known_window, vALLOCATOR<known_window>> windows;
    std::vector<vAPP*, vALLOCATOR<vAPP*>> applications;
    HWND frame_window = nullptr;
};

application_state& state() noexcept
{
    static application_state the_state;
    return the_state;
}

// The entries of all processes, none before this one has registered an application.
std::span<application_entry> registry_entries() noexcept
{
    void* const block = state().registry.data();
    if (!block)
        return {};
    return {static_cast<application_entry*>(block), most_applications};
}

void open_registry() noexcept
{
    shared_memory& registry = state().registry;
    if (!registry.data() && registry.open("APP_REGISTRA", most_applications * sizeof(application_entry))
        && registry.is_new())
        std::ranges::fill(registry_entries(), application_entry{});
}

bool accepts_files(HWND w) noexcept
{
    return (static_cast<DWORD>(GetWindowLongA(w, GWL_EXSTYLE)) & WS_EX_ACCEPTFILES) != 0;
}

// Two 16-bit coordinates in one message parameter.
LPARAM packed(const POINT& p) noexcept
{
    const auto low = static_cast<std::uint32_t>(p.x) & 0xFFFFU;
    const auto high = static_cast<std::uint32_t>(p.y) & 0xFFFFU;
    return static_cast<LPARAM>(high << 16 | low);
}

} // namespace

void vSYSTEM::RegisterApp(vAPP* app, HINSTANCE instance, HWND a, HWND b) noexcept
{
    const std::scoped_lock lock(state().guard);
    open_registry();
    const auto entries = registry_entries();
    const auto free = std::ranges::find(entries, 0U, &application_entry::instance);
    if (free != entries.end())
        *free = {number_of(instance), {number_of(a), number_of(b)}};
    if (!app)
        return;
    try {
        state().applications.push_back(app);
    } catch (const std::bad_alloc&) {
        // The application is then not offered by ActiveApp.
    }
}

void vSYSTEM::UnregisterApp(vAPP* app, HINSTANCE instance) noexcept
{
    const std::scoped_lock lock(state().guard);
    std::erase(state().applications, app);
    const auto entries = registry_entries();
    const auto held = std::ranges::find(entries, number_of(instance), &application_entry::instance);
    if (held != entries.end())
        *held = {};
}

int vSYSTEM::GetPavonApp(ITERATOR& it, HINSTANCE& instance, HWND& a, HWND& b) noexcept
{
    const std::scoped_lock lock(state().guard);
    const auto entries = registry_entries();
    const std::size_t i = it();
    const bool in_use = i < entries.size() && entries[i].instance != 0;
    if (in_use) {
        instance = handle_of<HINSTANCE>(entries[i].instance);
        a = handle_of<HWND>(entries[i].windows[0]);
        b = handle_of<HWND>(entries[i].windows[1]);
    }
    it.Next();
    return in_use;
}

vAPP* vSYSTEM::ActiveApp() noexcept
{
    const std::scoped_lock lock(state().guard);
    return state().applications.empty() ? nullptr : state().applications.front();
}

UINT vSYSTEM::GetPavonMsg() noexcept { return RegisterWindowMessageA("PAVONAPP"); }
UINT vSYSTEM::GetPaletteChangeMsg() noexcept { return RegisterWindowMessageA("PAVONPALETTEMESSAGE"); }
UINT vSYSTEM::GetVMKillMsg() noexcept { return RegisterWindowMessageA("VM_WM_CLOSE"); }

void vSYSTEM::SetFrameWindow(HWND w) noexcept
{
    const std::scoped_lock lock(state().guard);
    state().frame_window = w;
}

void vSYSTEM::GetApps() noexcept
{
    const std::scoped_lock lock(state().guard);
    state().windows.clear();
    const HWND frame = state().frame_window;
    HWND w = frame ? GetWindow(frame, GW_HWNDFIRST) : GetTopWindow(nullptr);
    try {
        for (; w; w = GetWindow(w, GW_HWNDNEXT)) {
            char* const name = GetLocalBuffer();
            GetClassNameA(w, name, longest_class_name + 1);
            if (*name != '#')
                state().windows.push_back({vSTRING(name), w});
        }
    } catch (const std::bad_alloc&) {
        // What was found so far is the list.
    }
}

std::uint16_t vSYSTEM::GetNoOfWindows() noexcept
{
    const std::scoped_lock lock(state().guard);
    return static_cast<std::uint16_t>(state().windows.size());
}

vSTRING vSYSTEM::GetAppName(std::uint16_t i) noexcept
{
    const std::scoped_lock lock(state().guard);
    return i < state().windows.size() ? state().windows[i].class_name : vSTRING();
}

HWND vSYSTEM::GetWindowHandle(const vSTRING& cls) noexcept
{
    const std::scoped_lock lock(state().guard);
    const auto found = std::ranges::find(state().windows, cls, &known_window::class_name);
    return found == state().windows.end() ? nullptr : found->window;
}

int vSYSTEM::FindApp(const vSTRING& cls) noexcept { return GetWindowHandle(cls) != nullptr; }

vSTRING vSYSTEM::GetAppTitle(const vSTRING& cls) noexcept
{
    char* const title = GetLocalBuffer();
    GetWindowTextA(GetWindowHandle(cls), title, longest_title + 1);
    return {title};
}

int vSYSTEM::IsPavonVMApp(const vSTRING& cls) noexcept
{
    const HWND w = GetWindowHandle(cls);
    return w && SendMessageA(w, GetPavonMessage(), 0, 0) == family_answer;
}

BOOL vSYSTEM::EnumChildProc(HWND child, LPARAM found) noexcept
{
    if (!accepts_files(child))
        return TRUE;
    *reinterpret_cast<HWND*>(found) = child;
    return FALSE;
}

HWND vSYSTEM::GetTargetWindow(HWND w) noexcept
{
    if (!w || accepts_files(w))
        return w;
    HWND found = nullptr;
    EnumChildWindows(w, EnumChildProc, reinterpret_cast<LPARAM>(&found));
    return found;
}

int vSYSTEM::IsDragDropApp(const vSTRING& cls) noexcept
{
    return GetTargetWindow(GetWindowHandle(cls)) != nullptr;
}

void vSYSTEM::SendHitTest(HWND w) noexcept
{
    const HWND target = GetTargetWindow(w);
    RECT area = {};
    if (!target || !GetClientRect(target, &area))
        return;
    POINT centre = {area.right / 2, area.bottom / 2};
    ClientToScreen(target, &centre);
    SendMessageA(target, WM_NCHITTEST, 0, packed(centre));
}

int vSYSTEM::SendToApp(HWND w, const vTRANSFER&) noexcept
{
    const UINT message = RegisterWindowMessageA("VMSourceWindow");
    SendMessageA(w, message, reinterpret_cast<WPARAM>(GetActiveWindow()), 0);
    SendHitTest(w);
    return 0;
}

int vSYSTEM::SendToApp(const vSTRING& cls, const vTRANSFER&) noexcept
{
    SendHitTest(GetWindowHandle(cls));
    return 0;
}

HWND vSYSTEM::FindPavonApp(const vSTRING&) noexcept { return nullptr; }

HDROP vSYSTEM::CreateDropMessage(POINT* at, int non_client) noexcept
{
    const HGLOBAL block = GlobalAlloc(GMEM_SHARE | GMEM_MOVEABLE | GMEM_ZEROINIT, sizeof(DROPFILES) + 1);
    if (auto* const header = static_cast<DROPFILES*>(GlobalLock(block))) {
        header->pFiles = sizeof(DROPFILES);
        if (at)
            header->pt = *at;
        header->fNC = non_client;
        GlobalUnlock(block);
    }
    return reinterpret_cast<HDROP>(block);
}

HDROP vSYSTEM::AppendDropFile(const vSTRING& name, HDROP drop) noexcept
{
    const auto old_block = reinterpret_cast<HGLOBAL>(drop);
    const std::size_t old_size = GlobalSize(old_block);
    if (old_size == 0)
        return nullptr;
    const std::size_t added = std::size_t{name.Length()} + 1;
    const HGLOBAL block
        = GlobalReAlloc(old_block, old_size + added, GMEM_SHARE | GMEM_MOVEABLE | GMEM_ZEROINIT);
    if (!block) {
        GlobalFree(old_block);
        return nullptr;
    }
    // The new name takes the place of the final NUL; the zeros behind it end the name and the list.
    auto* const bytes = static_cast<char*>(GlobalLock(block));
    std::memcpy(bytes + old_size - 1, name(), name.Length());
    GlobalUnlock(block);
    return reinterpret_cast<HDROP>(block);
}

} // namespace klv
