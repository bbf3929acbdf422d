#pragma once

#include "klv/base/buffer.h"
#include "klv/base/types.h"
#include "klv/devices/device.h"

#include <cstddef>
#include <cstdint>

namespace klv {

/// An off-screen device that draws into a palette bitmap of 8 bits (4 bits where the device has no more
/// than 8 colours); it starts white.
class vMEMDEVICE : public vDEVICE {
public:
    vMEMDEVICE() noexcept;
    vMEMDEVICE(std::uint16_t width, std::uint16_t height) noexcept;
    ~vMEMDEVICE() override;
    vMEMDEVICE(const vMEMDEVICE&) = delete;
    vMEMDEVICE& operator=(const vMEMDEVICE&) = delete;

    /// Makes a new white bitmap of the given size in pixels. \return 1, or 0 when there is no memory.
    int Prepare(std::uint16_t width, std::uint16_t height) noexcept;

    /// The memory context with the bitmap selected; each call is matched by a ReleaseWinDC.
    HDC GetWinDC() noexcept override;
    int ReleaseWinDC() noexcept override;

    /// The packed bitmap (header, colour table, bottom-up rows) with the current pixels; owned by the
    /// device, valid until the next call. Null before Prepare.
    BITMAPINFO* GetDIB() noexcept;
    /// Fills bits with white: the palette's white for 256 colours, all ones otherwise.
    static void InitBitmap(void* bits, int colours, std::uint32_t size) noexcept;

    std::uint16_t Width() const noexcept { return width_; }
    std::uint16_t Height() const noexcept { return height_; }

private:
    int Init() noexcept;
    void release_bitmap() noexcept;
    void release_context() noexcept;

    HDC memory_dc_ = nullptr;
    vBUFFER<std::uint8_t> packed_dib_;
    std::uint16_t width_ = 0;
    std::uint16_t height_ = 0;
    std::uint32_t image_size_ = 0;
    HBITMAP bitmap_ = nullptr;
    void* bits_ = nullptr; // the bitmap's pixels
    HGDIOBJ previous_bitmap_ = nullptr;
    int dc_references_ = 0;
};

} // namespace klv
