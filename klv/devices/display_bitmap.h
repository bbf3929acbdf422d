#pragma once

#include "klv/base/buffer.h"
#include "klv/base/types.h"
#include "klv/core/rect.h"
#include "klv/devices/device.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace klv {

class oIMGCONTEXT;
class oDEVICECONTEXT;

/// Which of two surfaces is drawn on.
enum vDUALSURFACE : std::int32_t {
    vSURFACE_FIRST = 0,
    vSURFACE_SECOND = 1,
};

/// How far a cached bitmap has been drawn.
enum vBMP_RENDER_INFO : std::int32_t {
    vBMP_NOT_RENDERED = 0,
    vBMP_RENDERED = 1,
};

/// The view of an image cache that a bitmap device renders for.
class vCACHEDVIEW {
public:
    virtual ~vCACHEDVIEW() = default;
    virtual std::uint32_t CachedImageID() const noexcept = 0;
};

/// An off-screen bitmap that is drawn on and then put onto another device, with or without transparency.
/// Transparent bitmaps start in a key colour; what still has it when the bitmap is drawn shows the target.
/// With 16 colours there are two surfaces instead: the picture is drawn on both, one started black and
/// one white, and what differs is transparent. Opaque bitmaps start white.
class vDISPLAYBMP : public vDEVICE {
public:
    /// \param width,height pixels, at least 1
    /// \param transparent 1 for a bitmap with see-through pixels
    /// \param bits 1, 4, 8, 16, 24 or 32 bits per pixel; 0 for the screen's
    /// \param palette 1 to take the screen palette as colour table (8 bits)
    vDISPLAYBMP(int width, int height, int transparent = 0, int bits = 0, int palette = 0) noexcept;
    /// A bitmap for an image drawn with a context: the size that the context gives the image in pixels.
    /// \param limit the greatest width and height; 0 for none. The proportions are kept.
    vDISPLAYBMP(oIMGCONTEXT& context, oDEVICECONTEXT* device, int transparent, int limit) noexcept;
    ~vDISPLAYBMP() override;
    vDISPLAYBMP(const vDISPLAYBMP&) = delete;
    vDISPLAYBMP& operator=(const vDISPLAYBMP&) = delete;

    vDEV_TYPE DeviceType() const noexcept override;
    HDC GetWinDC() noexcept override;
    int ReleaseWinDC() noexcept override;

    /// Selects the surface that is drawn on. \return 1, or 0 when there is no such surface.
    int SwitchSurface(vDUALSURFACE surface) noexcept;
    int IsDualSurfaced() const noexcept { return dual_surfaced_; }
    int IsTransparent() const noexcept { return transparent_; }
    COLORREF GetTransparencyColour() const noexcept { return key_colour_; }

    /// Puts the bitmap into a logical rectangle of a device, stretched when the sizes differ.
    /// \param clip logical rectangle that limits what is drawn, or null
    /// \return 1 when something was drawn
    int Draw(vDEVICE& device, const vRECT& rect, const vRECT* clip = nullptr) noexcept;
    /// Blends a 24- or 32-bit surface towards white where the fade (an 8-bit grey bitmap of the same size)
    /// is light. Other depths stay as they are. \return 1 when it was blended.
    int Merge(const vDISPLAYBMP& fade) noexcept;

    /// Copies the current surface into a packed bitmap: header, colour table, bottom-up rows.
    /// \return the bitmap, which the caller frees with vMemFree; null when memory is out.
    BITMAPINFO* CopyIntoDIB() noexcept;
    /// Hands the current surface's bitmap out; the device keeps none and draws nothing from then on.
    HBITMAP RemoveHBitmap() noexcept;
    /// Header and pixels of the current surface, owned by the device. \return 1, or 0 without a surface.
    int GetDIBSectionInfo(const BITMAPINFO** info, void** bits) const noexcept;

    /// (0, 0, width, height) in pixels; empty when the bitmap could not be made.
    vRECT Size() const noexcept;

    vBMP_RENDER_INFO QyIsRendered() const noexcept { return rendered_; }
    void SetRendered(vBMP_RENDER_INFO rendered) noexcept { rendered_ = rendered; }
    const vRECT& GetRenderedArea() const noexcept { return rendered_area_; }
    void SetRenderedArea(const vRECT& area) noexcept { rendered_area_ = area; }
    void SetParentCachedView(vCACHEDVIEW* view) noexcept { parent_view_ = view; }
    /// Identifier of the image that the parent view caches; 0 without one.
    std::uint32_t GetCachedImageID() const noexcept;

    /// Draws a crossed, dashed frame over the bitmap's area. \return 1
    int GrabScreenImage(oIMGCONTEXT& context) noexcept;

private:
    struct surface {
        HBITMAP bitmap = nullptr;
        vBUFFER<std::uint8_t> info; // a BITMAPINFO with its whole colour table
        void* bits = nullptr;

        int bits_per_pixel() const noexcept
        {
            return info.empty() ? 0 : reinterpret_cast<const BITMAPINFOHEADER*>(info.data())->biBitCount;
        }
    };

    const surface& current_surface() const noexcept { return surfaces_[static_cast<std::size_t>(current_)]; }

    void Init(int width, int height, int transparent, int bits, int palette) noexcept;
    bool make_surface(surface& target, int bits, bool with_palette) noexcept;
    void clear_surfaces() noexcept;
    void release_surfaces() noexcept;
    void select_surface(vDUALSURFACE index) noexcept;
    bool prepare_mask() noexcept;
    HBITMAP Create16ColMask() noexcept;
    void ModifySource() noexcept;
    void DrawBitmap(HDC target, const RECT& destination) noexcept;
    void DrawMaskedBitmap(HDC target, const RECT& destination) noexcept;

    HDC memory_dc_ = nullptr;
    HBITMAP mask_ = nullptr;
    HGDIOBJ previous_object_ = nullptr;
    std::array<surface, 2> surfaces_;
    vDUALSURFACE current_ = vSURFACE_FIRST;
    COLORREF key_colour_ = 0;
    bool mask_ready_ = false;
    int dual_surfaced_ = 0;
    int transparent_ = 0;
    int width_ = 0;
    int height_ = 0;
    vBMP_RENDER_INFO rendered_ = vBMP_NOT_RENDERED;
    vRECT rendered_area_;
    vCACHEDVIEW* parent_view_ = nullptr;
};

} // namespace klv
