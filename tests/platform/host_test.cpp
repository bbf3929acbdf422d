#include "klv/platform/host.h"

#include <cstdlib>
#include <stdexcept>

#include <gtest/gtest.h>

using namespace klv;

TEST(Host, HeadlessBoxIsOneLineWithTheDefaultAnswer)
{
    testing::internal::CaptureStderr();
    const int answer = MessageBoxA(nullptr, "one\r\ntwo \xE9", "Title", MB_YESNO | MB_DEFBUTTON2);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Title: one  two \xC3\xA9\n");
    EXPECT_EQ(answer, IDNO);
    EXPECT_FALSE(escape_pressed());
}

TEST(Host, DefaultAnswers)
{
    const struct {
        UINT style;
        int answer;
    } cases[] = {
        {MB_OK, IDOK},
        {MB_OKCANCEL | MB_DEFBUTTON2 | MB_ICONSTOP, IDCANCEL},
        {MB_ABORTRETRYIGNORE | MB_DEFBUTTON3, IDIGNORE},
        {MB_YESNOCANCEL | MB_DEFBUTTON3 | MB_SYSTEMMODAL, IDCANCEL},
        {MB_RETRYCANCEL, IDRETRY},
        {15, IDOK},
        {MB_YESNO | 0xF00, IDOK},
    };
    for (const auto& c : cases)
        EXPECT_EQ(default_answer(c.style), c.answer) << c.style;
}

TEST(Host, DebuggerOutputIsQuietUnlessAskedFor)
{
    testing::internal::CaptureStderr();
    unsetenv("KLV_DEBUG");
    OutputDebugStringA("quiet");
    setenv("KLV_DEBUG", "1", 1);
    OutputDebugStringA("loud");
    unsetenv("KLV_DEBUG");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "loud\n");
}

TEST(Host, CanBeReplacedAndMayThrow)
{
    struct failing : host {
        int message_box(HWND, const char*, const char*, UINT) override
        {
            throw std::runtime_error("no screen");
        }
        bool escape_pressed() override { return true; }
    } replacement;
    EXPECT_EQ(install_host(&replacement), nullptr);
    EXPECT_EQ(MessageBoxA(nullptr, "", "", MB_OK), 0);
    EXPECT_TRUE(escape_pressed());
    EXPECT_EQ(install_host(nullptr), &replacement);
    EXPECT_FALSE(escape_pressed());
}
