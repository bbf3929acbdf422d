#include "klv/core/message.h"
#include "klv/platform/host.h"

#include <gtest/gtest.h>

using namespace klv;

namespace {

struct answering_host : host {
    int answer = IDOK;
    int shown = 0;
    UINT style = 0;

    answering_host() { install_host(this); }
    ~answering_host() override { install_host(nullptr); }
    int message_box(HWND, const char*, const char*, UINT shown_style) override
    {
        ++shown;
        style = shown_style;
        return answer;
    }
};

} // namespace

TEST(Message, ShowsOnlyValidSets)
{
    const struct {
        int buttons, chosen;
        bool valid;
        UINT style;
    } cases[] = {
        {1, 1, true, MB_OK},
        {3, 2, true, MB_OKCANCEL | MB_DEFBUTTON2},
        {3, 4, false, 0},
        {10, 8, true, MB_RETRYCANCEL},
        {14, 16, false, 0},
        {4 | 8 | 16, 16, true, MB_ABORTRETRYIGNORE | MB_DEFBUTTON3},
        {96, 64, true, MB_YESNO | MB_DEFBUTTON2},
        {98, 2, true, MB_YESNOCANCEL | MB_DEFBUTTON3},
        {2, 2, false, 0},
        {96, 0, false, 0},
    };
    answering_host host;
    for (const auto& c : cases) {
        host.shown = 0;
        const int answer = vMESSAGE().Query("text", "title", c.buttons, c.chosen);
        EXPECT_EQ(host.shown, c.valid ? 1 : 0) << c.buttons << ' ' << c.chosen;
        EXPECT_EQ(answer, c.valid ? 1 : 0) << c.buttons << ' ' << c.chosen;
        if (c.valid) {
            EXPECT_EQ(host.style, c.style | MB_ICONQUESTION | MB_SYSTEMMODAL);
        }
    }
}

TEST(Message, MapsAnswersToButtons)
{
    answering_host host;
    const int buttons[] = {0, 1, 2, 4, 8, 16, 32, 64, 1, 0};
    for (int answer = 0; answer < 10; ++answer) {
        host.answer = answer;
        EXPECT_EQ(vMESSAGE().Info("", ""), buttons[answer]) << answer;
    }
    vMESSAGE(reinterpret_cast<HWND>(std::uintptr_t{8})).Critical("", "");
    EXPECT_EQ(host.style, MB_OK | MB_ICONSTOP) << "an owner: not system-modal";
}
