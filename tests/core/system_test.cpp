#include "klv/core/library_entry.h"
#include "klv/core/system.h"
#include "klv/platform/module_table.h"
#include "klv/platform/system/global_memory.h"
#include "klv/platform/system/profile.h"
#include "klv/platform/system/settings.h"
#include "klv/platform/system/windows.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace klv {

// The services that only the applications' own class may call.
struct system_access {
    static void add(HINSTANCE h, HWND a, HWND b, vAPP* app = nullptr) { vSYSTEM::RegisterApp(app, h, a, b); }
    static void remove(HINSTANCE h, vAPP* app = nullptr) { vSYSTEM::UnregisterApp(app, h); }
    static int get(ITERATOR& it, HINSTANCE& h, HWND& a, HWND& b) { return vSYSTEM::GetPavonApp(it, h, a, b); }
    static HDROP create(POINT* at, int nc) { return vSYSTEM::CreateDropMessage(at, nc); }
    static HDROP append(const vSTRING& name, HDROP drop) { return vSYSTEM::AppendDropFile(name, drop); }
};

class vTRANSFER { };
class vAPP { };

} // namespace klv

using namespace klv;

namespace {

bool is_mapped(const std::string& name)
{
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);)
        if (line.find(name) != std::string::npos)
            return true;
    return false;
}

template <class Handle> Handle handle(std::uintptr_t number) { return reinterpret_cast<Handle>(number); }

std::vector<UINT> messages;

LRESULT answer_as_family(HWND, UINT message, WPARAM, LPARAM lparam)
{
    messages.push_back(message);
    if (message == WM_NCHITTEST)
        messages.push_back(static_cast<UINT>(lparam));
    return message == vSYSTEM::GetPavonMsg() ? 0x0B0B0B0B : 0;
}

} // namespace

TEST(System, ReadsItsSettingsAtEveryNotification)
{
    const std::string directory = testing::TempDir() + "klv-system-settings";
    std::filesystem::remove_all(directory);
    set_settings_directory(directory.c_str());

    EXPECT_EQ(DllMain(library_instance(), 1, nullptr), 1);
    EXPECT_EQ(vSYSTEM::GetTraceLevel(), 0);
    EXPECT_EQ(vSYSTEM::CheckHeap(), 0);

    WriteProfileStringA("virtualmachine", "CheckHeap", "yes");
    WriteProfileStringA("VirtualMachine", "TraceLevel", "1234");
    DllMain(library_instance(), 2, nullptr);
    EXPECT_EQ(vSYSTEM::CheckHeap(), 1);
    EXPECT_EQ(vSYSTEM::GetTraceLevel(), 123) << "three characters";

    WriteProfileStringA("VirtualMachine", "CheckHeap", "yesterday");
    DllMain(library_instance(), 0, nullptr);
    EXPECT_EQ(vSYSTEM::CheckHeap(), 0);
    set_settings_directory(nullptr);
    EXPECT_EQ(WEP(0), 1);
}

TEST(System, RegistersAtMostTenApplications)
{
    EXPECT_FALSE(is_mapped("APP_REGISTRA")) << "nobody has registered yet";
    for (std::uintptr_t i = 1; i <= 11; ++i)
        system_access::add(handle<HINSTANCE>(i * 16), handle<HWND>(i), handle<HWND>(100 + i));
    EXPECT_TRUE(is_mapped("APP_REGISTRA"));
    ITERATOR it;
    HINSTANCE h = nullptr;
    HWND a = nullptr;
    HWND b = nullptr;
    for (std::uintptr_t i = 1; i <= 10; ++i) {
        ASSERT_EQ(system_access::get(it, h, a, b), 1);
        EXPECT_EQ(h, handle<HINSTANCE>(i * 16));
        EXPECT_EQ(a, handle<HWND>(i));
        EXPECT_EQ(b, handle<HWND>(100 + i));
    }
    EXPECT_EQ(system_access::get(it, h, a, b), 0);
    EXPECT_EQ(it(), 11);

    system_access::remove(handle<HINSTANCE>(3 * 16));
    it.Reset();
    it.Next();
    it.Next();
    EXPECT_EQ(system_access::get(it, h, a, b), 0);
    system_access::add(handle<HINSTANCE>(0x1234), handle<HWND>(1), nullptr);
    it.Reset();
    it.Next();
    it.Next();
    EXPECT_EQ(system_access::get(it, h, a, b), 1) << "the freed entry is used again";
    EXPECT_EQ(h, handle<HINSTANCE>(0x1234));
    for (std::uintptr_t i = 1; i <= 10; ++i)
        system_access::remove(handle<HINSTANCE>(i * 16));
    system_access::remove(handle<HINSTANCE>(0x1234));
}

TEST(System, KnowsTheFirstApplicationOfTheProcess)
{
    vAPP first, second;
    system_access::add(nullptr, nullptr, nullptr, &first);
    system_access::add(nullptr, nullptr, nullptr, &second);
    EXPECT_EQ(vSYSTEM::ActiveApp(), &first);
    system_access::remove(nullptr, &first);
    EXPECT_EQ(vSYSTEM::ActiveApp(), &second);
    system_access::remove(nullptr, &second);
    EXPECT_EQ(vSYSTEM::ActiveApp(), nullptr);
}

TEST(System, FindsTheWindowsOfApplications)
{
    const HWND plain = create_window({.class_name = "Plain", .title = "A window"});
    const HWND hidden = create_window({.class_name = "#32770"});
    const HWND family
        = create_window({.class_name = "Family", .title = "Draw", .procedure = answer_as_family});
    const HWND pane = create_window({.class_name = "Pane", .parent = family});
    const HWND target = create_window({.class_name = "Target",
        .extended_style = WS_EX_ACCEPTFILES,
        .client_area = {100, 200, 120, 240},
        .parent = pane,
        .procedure = answer_as_family});

    vSYSTEM::SetFrameWindow(plain);
    vSYSTEM::GetApps();
    EXPECT_EQ(vSYSTEM::NoOfApps(), 2);
    EXPECT_TRUE(vSYSTEM::GetAppName(0) == "Family");
    EXPECT_TRUE(vSYSTEM::GetAppName(1) == "Plain");
    EXPECT_TRUE(vSYSTEM::GetAppName(2) == "");
    EXPECT_EQ(vSYSTEM::FindApp("#32770"), 0);
    EXPECT_EQ(vSYSTEM::FindApp("Plain"), 1);
    EXPECT_TRUE(vSYSTEM::GetAppTitle("Family") == "Draw");
    EXPECT_TRUE(vSYSTEM::GetAppTitle("Nobody") == "");
    EXPECT_EQ(vSYSTEM::IsPavonVMApp("Family"), 1);
    EXPECT_EQ(vSYSTEM::IsPavonVMApp("Plain"), 0);
    EXPECT_EQ(vSYSTEM::IsDragDropApp("Family"), 1) << "a window below accepts files";
    EXPECT_EQ(vSYSTEM::IsDragDropApp("Plain"), 0);

    messages.clear();
    EXPECT_EQ(vSYSTEM::SendToApp("Family", vTRANSFER()), 0);
    EXPECT_EQ(messages, (std::vector<UINT>{WM_NCHITTEST, 220U << 16 | 110U}));
    messages.clear();
    vSYSTEM::SendToApp(family, vTRANSFER());
    EXPECT_EQ(messages,
        (std::vector<UINT>{RegisterWindowMessageA("VMSourceWindow"), WM_NCHITTEST, 220U << 16 | 110U}));

    for (const HWND w : {plain, hidden, family})
        DestroyWindow(w);
    EXPECT_FALSE(IsWindow(target));
    vSYSTEM::SetFrameWindow(nullptr);
    vSYSTEM::GetApps();
    EXPECT_EQ(vSYSTEM::GetNoOfWindows(), 0);
}

TEST(System, BuildsFileDrops)
{
    POINT at = {3, 4};
    HDROP drop = system_access::create(&at, 1);
    EXPECT_EQ(DragQueryFileA(drop, 0xFFFFFFFF, nullptr, 0), 0U);
    drop = system_access::append("one.wmf", drop);
    drop = system_access::append("two.gif", drop);
    const auto block = reinterpret_cast<HGLOBAL>(drop);
    const std::uint8_t expected[] = "\x14\0\0\0\x03\0\0\0\x04\0\0\0\x01\0\0\0\0\0\0\0one.wmf\0two.gif\0";
    ASSERT_EQ(GlobalSize(block), sizeof expected);
    EXPECT_EQ(std::memcmp(GlobalLock(block), expected, sizeof expected), 0);
    char name[5];
    EXPECT_EQ(DragQueryFileA(drop, 1, name, sizeof name), 4U);
    EXPECT_STREQ(name, "two.");
    EXPECT_EQ(DragQueryFileA(drop, 2, name, sizeof name), 0U);
    EXPECT_EQ(DragQueryFileA(drop, 0xFFFFFFFF, nullptr, 0), 2U);
    GlobalFree(block);
}

TEST(Module, TakesWhatPrepareRecordedOnce)
{
    struct application : vMODULE {
        using vMODULE::GetCommand;
    };
    vMODULE* slot = nullptr;
    vMODULE::Prepare(handle<HINSTANCE>(0x50), &slot, "open a.wmf");
    {
        const vMODULE first;
        EXPECT_EQ(slot, &first);
        EXPECT_EQ(first.GetInstance(), handle<HINSTANCE>(0x50));
        const application second;
        EXPECT_EQ(second.GetInstance(), nullptr);
        EXPECT_TRUE(application::GetCommand() == "open a.wmf");
    }
    EXPECT_TRUE(application::GetCommand() == "");
}

TEST(Module, PathHasNoFileName)
{
    static const module_symbol symbols[] = {{"nothing", nullptr}};
    RegisterModule("C:\\lib\\x.dll", symbols);
    const HINSTANCE instance = LoadLibraryA("c:\\LIB\\x.dll");
    vMODULE::Prepare(instance, nullptr, nullptr);
    EXPECT_TRUE(vMODULE().GetModulePath() == "c:\\lib");
    FreeLibrary(instance);

    char library[1000];
    GetModuleFileNameA(library_instance(), library, sizeof library);
    EXPECT_EQ(std::filesystem::path(library).parent_path().string(),
        std::string(vSYSTEM::Pointer()->GetModulePath().View()));
}
