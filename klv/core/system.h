#pragma once

#include "klv/base/types.h"
#include "klv/core/exception.h"
#include "klv/core/list.h"
#include "klv/core/module.h"
#include "klv/core/resource_id.h"
#include "klv/core/string.h"

#include <cstddef>
#include <cstdint>

namespace klv {

class vAPP;
class vTRANSFER;

/// The process-wide services: scratch buffers, settings, memory exhaustion, and how the applications of the
/// family find one another. There is one object, which every thread may use.
class vSYSTEM : public vMODULE {
public:
    static constexpr std::size_t buffer_size = 1024;

    /// The one object, the default module of vRESID. Made at its first use.
    [[nodiscard]] static vSYSTEM* Pointer() noexcept;

    /// Two scratch buffers of buffer_size bytes, each thread's own. Any operation of the library may use
    /// them.
    [[nodiscard]] static char* GetBuffer() noexcept;
    [[nodiscard]] static char* GetLocalBuffer() noexcept;

    [[nodiscard]] static DEFEXCEP& GetDefaultException() noexcept;
    [[nodiscard]] static int GetExceptionFlag() noexcept;
    static void SetExceptionFlag(int flag) noexcept;

    /// Stored for the applications, which do what they say; read from the user's profile when first asked
    /// for.
    [[nodiscard]] static std::uint16_t GetTraceLevel() noexcept;
    static void SetTraceLevel(std::uint16_t level) noexcept;
    [[nodiscard]] static int CheckHeap() noexcept;
    static void HeapCheck(int on) noexcept;

    /// Numbers of the registered window messages.
    [[nodiscard]] static UINT GetPavonMsg() noexcept;
    [[nodiscard]] static UINT GetPaletteChangeMsg() noexcept;
    [[nodiscard]] static UINT GetVMKillMsg() noexcept;

    static void SetFrameWindow(HWND w) noexcept;
    /// Lists the top-level windows whose class name does not begin with '#'.
    static void GetApps() noexcept;
    /// What GetApps found last.
    [[nodiscard]] static std::uint16_t GetNoOfWindows() noexcept;
    [[nodiscard]] static std::uint16_t NoOfApps() noexcept { return GetNoOfWindows(); }
    /// The class name of the i-th window; empty when there is none.
    [[nodiscard]] static vSTRING GetAppName(std::uint16_t i) noexcept;
    /// \return 1 when a listed window has that class name
    [[nodiscard]] static int FindApp(const vSTRING& cls) noexcept;
    [[nodiscard]] static vSTRING GetAppTitle(const vSTRING& cls) noexcept;
    /// \return 1 when a listed window of that class answers as an application of the family
    [[nodiscard]] static int IsPavonVMApp(const vSTRING& cls) noexcept;
    /// \return 1 when a listed window of that class, or one below it, accepts dropped files
    [[nodiscard]] static int IsDragDropApp(const vSTRING& cls) noexcept;
    /// Announces a transfer to the window and asks it what is under its centre. \return 0
    static int SendToApp(HWND w, const vTRANSFER& transfer) noexcept;
    static int SendToApp(const vSTRING& cls, const vTRANSFER& transfer) noexcept;
    /// \return null
    [[nodiscard]] static HWND FindPavonApp(const vSTRING& name) noexcept;
    /// The first object of the process's application list, or null.
    [[nodiscard]] static vAPP* ActiveApp() noexcept;

private:
    friend class vAPP;
    friend struct system_access; // lets the tests reach the private services
    friend void vMemFailed(std::uint32_t) noexcept;
    friend int DllMain(HINSTANCE, std::uint32_t, void*) noexcept;

    vSYSTEM() noexcept;

    static void ReadSettings() noexcept;

    // Releases the reserve of the default exception and sets the exception flag.
    // \return 0: the failed allocation is not tried again
    static int NewFailureException(unsigned int size) noexcept;
    [[nodiscard]] static UINT GetPavonMessage() noexcept { return GetPavonMsg(); }

    // The block that the applications of all processes share appears when the first of them registers.
    static void RegisterApp(vAPP* app, HINSTANCE instance, HWND a, HWND b) noexcept;
    static void UnregisterApp(vAPP* app, HINSTANCE instance) noexcept;
    static int GetPavonApp(ITERATOR& it, HINSTANCE& instance, HWND& a, HWND& b) noexcept;

    [[nodiscard]] static HWND GetWindowHandle(const vSTRING& cls) noexcept;
    [[nodiscard]] static HWND GetTargetWindow(HWND w) noexcept;
    static BOOL EnumChildProc(HWND child, LPARAM found) noexcept;
    static void SendHitTest(HWND w) noexcept;

    // A file-drop block without names, and the block with one more name. Null when memory is out; the block
    // is then freed.
    [[nodiscard]] static HDROP CreateDropMessage(POINT* at, int non_client) noexcept;
    [[nodiscard]] static HDROP AppendDropFile(const vSTRING& name, HDROP drop) noexcept;
};

} // namespace klv
