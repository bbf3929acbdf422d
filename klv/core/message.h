#pragma once

#include "klv/base/types.h"
#include "klv/core/object.h"

namespace klv {

/// The buttons of a message box; sets are sums.
namespace message_button {
inline constexpr int ok = 1;
inline constexpr int cancel = 2;
inline constexpr int abort = 4;
inline constexpr int retry = 8;
inline constexpr int ignore = 16;
inline constexpr int yes = 32;
inline constexpr int no = 64;
} // namespace message_button

/// Message boxes of one owner window; system-modal when there is none. Valid button sets: OK; OK and Cancel;
/// Retry and Cancel; Abort, Retry and Ignore; Yes and No; Yes, No and Cancel. The default must be one of the
/// set. Otherwise nothing is shown and the answer is 0, as it is when the box fails.
class vMESSAGE : public vOBJECT {
public:
    explicit vMESSAGE(HWND owner = nullptr) noexcept
        : owner_(owner)
    {
    }

    /// \return the pressed button; closing the box counts as OK
    int Info(const char* text, const char* title) const noexcept;
    int Warning(const char* text, const char* title, int buttons = message_button::ok,
        int default_button = message_button::ok) const noexcept;
    int Critical(const char* text, const char* title, int buttons = message_button::ok,
        int default_button = message_button::ok) const noexcept;
    int Query(const char* text, const char* title, int buttons, int default_button) const noexcept;
    /// The platform's beep of that kind.
    static void Beep(short kind) noexcept;

private:
    int Display(
        const char* text, const char* title, UINT icon, int buttons, int default_button) const noexcept;

    HWND owner_;
};

/// The applications' clipboard; it has no state of its own.
class vCLIPBOARD : public vOBJECT { };

} // namespace klv
