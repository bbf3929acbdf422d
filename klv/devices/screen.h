#pragma once

#include "klv/base/types.h"
#include "klv/devices/detail/screen_palette.h"
#include "klv/devices/device.h"

#include <array>
#include <cstdint>
#include <mutex>

namespace klv {

/// A colour of the user interface: 100 to 104 are the fixed ones below, any other value is an index of
/// the platform's system colours.
enum vSCREENCOLOUR : std::int32_t {
    vSCREEN_WHITE = 100,
    vSCREEN_LIGHT_GREY = 101,
    vSCREEN_GREY = 102,
    vSCREEN_DARK_GREY = 103,
    vSCREEN_BLACK = 104,
};

/// How the screen device combines what is drawn with what is there.
enum vDRAWMODE : std::int32_t {
    vDRAW_COPY = 0,
    vDRAW_XOR = 1,
};

/// An 8 x 8 bitmap of 8 bits whose colour table names palette entries 0 to 255, packed.
struct screen_pattern {
    BITMAPINFOHEADER header;
    std::array<std::uint16_t, screen_palette_size> palette_indices;
    std::array<std::uint8_t, 64> pixels;
};
static_assert(sizeof(screen_pattern) == 616);

/// The screen: the process-wide device (vDEVICE::GetScreen) that owns the 256-colour palette and answers
/// the screen's measures.
class vSCREEN : public vDEVICE {
public:
    vSCREEN() noexcept;
    ~vSCREEN() override;
    vSCREEN(const vSCREEN&) = delete;
    vSCREEN& operator=(const vSCREEN&) = delete;

    /// Sets the screen up anew, after its depth or colours changed.
    void ReInitialize() noexcept;

    HDC GetWinDC() noexcept override;
    int ReleaseWinDC() noexcept override;

    /// Switches the palette on or off; without effect unless the screen has 256 colours.
    void EnablePalette(int enabled) noexcept;
    int PaletteEnabled() const noexcept { return palette_in_use_; }
    /// Realises the palette into a context. \return 1 when it is in use and was realised.
    int UpdatePalette(HDC dc) const noexcept;

    static HPALETTE Palette() noexcept { return palette_; }
    static const LOGPALETTE* LogPalette() noexcept { return log_palette_.log_palette(); }
    /// Makes the palette; once per process.
    static void Create256Palette() noexcept;
    /// 1 while the screen device is set up.
    static int Valid() noexcept { return valid_; }

    COLORREF Colour(vSCREENCOLOUR colour) const noexcept;
    void DrawMode(vDRAWMODE mode) noexcept;
    vDRAWMODE DrawMode() const noexcept { return draw_mode_; }
    /// Width and height in pixels.
    vSIZE Size() const noexcept;
    const screen_pattern& Pattern() const noexcept { return pattern_; }

private:
    void Constructor() noexcept;
    void Destructor() noexcept;

    std::mutex dc_mutex_; ///< threads ask the one screen
    HDC screen_dc_ = nullptr;
    int screen_dc_references_ = 0;
    int palette_in_use_ = 0;
    screen_pattern pattern_{};
    vDRAWMODE draw_mode_ = vDRAW_COPY;

    static HPALETTE palette_;
    static palette_256 log_palette_;
    static int valid_;
    static std::mutex palette_mutex_;
};

} // namespace klv
