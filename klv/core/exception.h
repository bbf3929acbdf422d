#pragma once

#include "klv/base/types.h"
#include "klv/core/object.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace klv {

/// Base of the library's exception objects. They take their memory from the platform's global blocks, so
/// that one can be made while the heap is exhausted.
class vEXCEPTION : public vOBJECT {
public:
    virtual ~vEXCEPTION() = default;

    static void* operator new(std::size_t size) noexcept;
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void* block) noexcept;
    static void operator delete(void*, void*) noexcept { }
};

/// What the application does when memory is out: it holds a reserve that is released at the first failure,
/// and shows one of two messages, so that the user can save and quit.
class DEFEXCEP : public vEXCEPTION {
public:
    static constexpr std::uint32_t reserve_size = 5064;
    static constexpr std::uint32_t message_size = 255; ///< bytes of a message text, its NUL included

    DEFEXCEP() noexcept;
    DEFEXCEP(const DEFEXCEP&) = delete;
    DEFEXCEP& operator=(const DEFEXCEP&) = delete;
    ~DEFEXCEP() override;

    /// Shows the first message once, later the second, under the title of window w. For one thread at a time.
    /// \return 1 when the user answered OK and the exception flag was cleared, else 0
    int HandleException(HWND w) noexcept;

    /// Reads both texts from the library's string resources.
    void LoadMessages(HINSTANCE instance) noexcept;
    /// Frees the reserve; later calls do nothing.
    void ReleaseReserve() noexcept;
    [[nodiscard]] bool HoldsReserve() const noexcept { return reserve_ != nullptr; }

private:
    // Memory may run out in any thread.
    std::atomic<void*> reserve_;
    std::atomic<char*> first_message_;
    char* second_message_;
};

} // namespace klv
