#include "klv/base/memory.h"
#include "klv/core/exception.h"
#include "klv/core/module.h"
#include "klv/core/system.h"
#include "klv/platform/host.h"
#include "klv/platform/system/windows.h"

#include <memory>

#include <gtest/gtest.h>

using namespace klv;

namespace {

class Memory : public testing::Test {
protected:
    void TearDown() override
    {
        vMemNeverFail();
        vSYSTEM::SetExceptionFlag(0);
    }
};

struct recording_host : host {
    int answer = IDOK;
    std::string text, caption;
    UINT style = 0;

    recording_host() { install_host(this); }
    ~recording_host() override { install_host(nullptr); }
    int message_box(HWND, const char* shown, const char* title, UINT shown_style) override
    {
        text = shown;
        caption = title;
        style = shown_style;
        return answer;
    }
};

} // namespace

TEST_F(Memory, FailureRaisesTheFlagAndAnswersNull)
{
    vMemFailAfter(0, memory_failure::once);
    EXPECT_EQ(new vMODULE, nullptr) << "objects of the library answer null";
    EXPECT_EQ(vSYSTEM::GetExceptionFlag(), 1);
}

TEST_F(Memory, ReserveGoesWithTheFirstFailure)
{
    DEFEXCEP& exception = vSYSTEM::GetDefaultException();
    vMemFailAfter(0);
    EXPECT_EQ(vMemAlloc(4), nullptr);
    EXPECT_FALSE(exception.HoldsReserve());
}

TEST_F(Memory, HandlerShowsTheFirstMessageOnce)
{
    recording_host shown;
    const HWND w = create_window({.title = "Draw"});
    const auto exception = std::make_unique<DEFEXCEP>();
    exception->LoadMessages(vSYSTEM::Pointer()->GetInstance());

    vSYSTEM::SetExceptionFlag(1);
    shown.answer = IDCANCEL;
    EXPECT_EQ(exception->HandleException(w), 0);
    EXPECT_EQ(vSYSTEM::GetExceptionFlag(), 1);
    EXPECT_EQ(shown.text,
        "la m\xE9moire est presque satur\xE9"
        "e");
    EXPECT_EQ(shown.caption, "Draw");
    EXPECT_EQ(shown.style, 0x1010U);

    shown.answer = IDOK;
    EXPECT_EQ(exception->HandleException(w), 1);
    EXPECT_EQ(vSYSTEM::GetExceptionFlag(), 0);
    EXPECT_EQ(shown.text, "M\xE9moire insuffisante");
    DestroyWindow(w);
}
