#include "klv/platform/system/windows.h"

#include <string>

#include <gtest/gtest.h>

using namespace klv;

namespace {

std::string class_of(HWND window)
{
    char name[20];
    GetClassNameA(window, name, sizeof name);
    return name;
}

std::string visited;

BOOL visit(HWND window, LPARAM last)
{
    visited += class_of(window);
    return window != reinterpret_cast<HWND>(last);
}

LRESULT sum(HWND, UINT message, WPARAM wparam, LPARAM lparam)
{
    return static_cast<LRESULT>(message) + static_cast<LRESULT>(wparam) + lparam;
}

} // namespace

TEST(Windows, StandInOrderNewestOnTop)
{
    const HWND a = create_window({.class_name = "a"});
    const HWND b = create_window({.class_name = "b"});
    const HWND c = create_window({.class_name = "c"});
    const HWND child = create_window({.class_name = "x", .parent = b});
    const HWND grandchild = create_window({.class_name = "z", .parent = child});
    const HWND sibling = create_window({.class_name = "y", .parent = b});

    EXPECT_EQ(GetTopWindow(nullptr), c);
    EXPECT_EQ(GetWindow(a, GW_HWNDFIRST), c);
    EXPECT_EQ(GetWindow(c, GW_HWNDLAST), a);
    EXPECT_EQ(GetWindow(c, GW_HWNDNEXT), b);
    EXPECT_EQ(GetWindow(b, GW_HWNDPREV), c);
    EXPECT_EQ(GetWindow(a, GW_HWNDNEXT), nullptr);
    EXPECT_EQ(GetWindow(b, GW_CHILD), sibling);
    EXPECT_EQ(GetWindow(sibling, GW_HWNDNEXT), child);

    visited.clear();
    EnumChildWindows(b, visit, 0);
    EXPECT_EQ(visited, "yxz") << "depth first";
    visited.clear();
    EnumChildWindows(b, visit, reinterpret_cast<LPARAM>(child));
    EXPECT_EQ(visited, "yx") << "stops when told";

    SetActiveWindow(b);
    EXPECT_TRUE(DestroyWindow(b));
    EXPECT_FALSE(IsWindow(grandchild));
    EXPECT_EQ(GetActiveWindow(), nullptr);
    EXPECT_FALSE(DestroyWindow(b));
    EXPECT_EQ(create_window({.parent = b}), nullptr);
    DestroyWindow(a);
    DestroyWindow(c);
    EXPECT_EQ(GetTopWindow(nullptr), nullptr);
}

TEST(Windows, TextsAreasAndMessages)
{
    const HWND w = create_window({.title = "A long title",
        .extended_style = WS_EX_ACCEPTFILES,
        .client_area = {10, 20, 110, 70},
        .procedure = sum});
    char text[7];
    EXPECT_EQ(GetWindowTextA(w, text, sizeof text), 6);
    EXPECT_STREQ(text, "A long");
    EXPECT_EQ(GetWindowTextA(nullptr, text, sizeof text), 0);
    EXPECT_STREQ(text, "");
    RECT area;
    ASSERT_TRUE(GetClientRect(w, &area));
    EXPECT_EQ(area, (RECT{0, 0, 100, 50}));
    POINT p = {1, 2};
    ClientToScreen(w, &p);
    EXPECT_EQ(p, (POINT{11, 22}));
    EXPECT_EQ(GetWindowLongA(w, GWL_EXSTYLE), 0x10);
    EXPECT_EQ(SendMessageA(w, 1, 20, 300), 321);
    DestroyWindow(w);
    EXPECT_EQ(SendMessageA(w, 1, 20, 300), 0);

    const UINT message = RegisterWindowMessageA("TEST_MESSAGE");
    EXPECT_TRUE(message >= 0xC000 && message <= 0xFFFF);
    EXPECT_EQ(RegisterWindowMessageA("test_message"), message);
    EXPECT_NE(RegisterWindowMessageA("TEST_MESSAGE_2"), message);
}
