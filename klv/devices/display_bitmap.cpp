#include "klv/devices/display_bitmap.h"

#include "klv/attributes/fill_spec.h"
#include "klv/attributes/line_spec.h"
#include "klv/base/memory.h"
#include "klv/base/saturating.h"
#include "klv/bitmaps/image_context.h"
#include "klv/core/integer_math.h"
#include "klv/devices/fades/transparency_mask.h"
#include "klv/devices/screen.h"
#include "klv/gdi/gdi.h"

#include <algorithm>
#include <cstring>

namespace klv {
namespace {

constexpr COLORREF key_colour_wanted = RGB(160, 232, 200);
constexpr int largest_side = 32767;
constexpr int bits_with_two_surfaces = 4;

std::size_t table_entries(int bits) { return bits <= 8 ? std::size_t{1} << bits : 0; }

RGBQUAD grey(std::size_t level)
{
    const auto byte = static_cast<BYTE>(level);
    return {byte, byte, byte, 0};
}

// The colours of a surface: black and white, the sixteen, the screen's palette, or 256 greys.
void set_colour_table(RGBQUAD* table, int bits, bool with_palette)
{
    const std::size_t count = table_entries(bits);
    if (bits == 4) {
        std::ranges::copy(default_16_colours, table);
    } else if (bits == 8 && with_palette) {
        vSCREEN::Create256Palette();
        const PALETTEENTRY* const entries = vSCREEN::LogPalette()->palPalEntry;
        std::transform(entries, entries + count, table, quad_of);
    } else {
        for (std::size_t i = 0; i < count; ++i)
            table[i] = grey(i * 255 / (count - 1));
    }
}

std::uint64_t image_bytes(int width, int height, int bits)
{
    return (std::uint64_t{static_cast<unsigned>(width)} * static_cast<unsigned>(bits) + 31) / 32 * 4
        * static_cast<unsigned>(height);
}

bool is_depth(int bits)
{
    return bits == 1 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32;
}

int screen_bits() noexcept
{
    vSCREEN& screen = vDEVICE::GetScreen();
    const active_dc dc(screen);
    return GetDeviceCaps(dc, BITSPIXEL) * GetDeviceCaps(dc, PLANES);
}

/// A rectangle of a context by its corner and extents, which are negative where it is mirrored.
struct placed {
    explicit placed(const RECT& r)
        : x(r.left)
        , y(r.top)
        , width(saturated(std::int64_t{r.right} - r.left))
        , height(saturated(std::int64_t{r.bottom} - r.top))
    {
    }
    int x;
    int y;
    int width;
    int height;
};

void copy(HDC target, const placed& to, HDC source, int width, int height, DWORD operation)
{
    if (to.width == width && to.height == height)
        BitBlt(target, to.x, to.y, width, height, source, 0, 0, operation);
    else
        StretchBlt(target, to.x, to.y, to.width, to.height, source, 0, 0, width, height, operation);
}

} // namespace

vDISPLAYBMP::vDISPLAYBMP(int width, int height, int transparent, int bits, int palette) noexcept
    : vDEVICE(nullptr)
{
    Init(width, height, transparent, bits, palette);
}

vDISPLAYBMP::vDISPLAYBMP(oIMGCONTEXT& context, oDEVICECONTEXT*, int transparent, int limit) noexcept
    : vDEVICE(nullptr)
{
    int width = std::max(1, wrap_abs(context.GetBmpWidth()));
    int height = std::max(1, wrap_abs(context.GetBmpHeight()));
    const int longer = std::max(width, height);
    if (limit > 0 && longer > limit) {
        width = std::max(1, MulDiv(width, limit, longer));
        height = std::max(1, MulDiv(height, limit, longer));
    }
    Init(width, height, transparent, 0, 1);
}

vDISPLAYBMP::~vDISPLAYBMP()
{
    if (memory_dc_) {
        if (previous_object_)
            SelectObject(memory_dc_, previous_object_);
        DeleteDC(memory_dc_);
    }
    release_surfaces();
    if (mask_)
        DeleteObject(mask_);
}

void vDISPLAYBMP::release_surfaces() noexcept
{
    for (surface& s : surfaces_) {
        if (s.bitmap)
            DeleteObject(s.bitmap);
        s.bitmap = nullptr;
        s.bits = nullptr;
    }
}

// ---- Surfaces ------------------------------------------------------------------------------------------

void vDISPLAYBMP::Init(int width, int height, int transparent, int bits, int palette) noexcept
{
    if (bits == 0)
        bits = screen_bits();
    if (width < 1 || height < 1 || width > largest_side || height > largest_side || !is_depth(bits))
        return;
    memory_dc_ = CreateCompatibleDC(nullptr);
    const bool two = transparent && bits == bits_with_two_surfaces;
    width_ = width;
    height_ = height;
    if (!memory_dc_ || !make_surface(surfaces_[0], bits, palette != 0)
        || (two && !make_surface(surfaces_[1], bits, false))) {
        release_surfaces();
        width_ = height_ = 0;
        return;
    }
    transparent_ = transparent ? 1 : 0;
    dual_surfaced_ = two ? 1 : 0;
    previous_object_ = SelectObject(memory_dc_, surfaces_[0].bitmap);
    DescribeContext(memory_dc_);
    key_colour_ = GetNearestColor(memory_dc_, key_colour_wanted);
    clear_surfaces();
}

bool vDISPLAYBMP::make_surface(surface& target, int bits, bool with_palette) noexcept
{
    const std::uint64_t size = image_bytes(width_, height_, bits);
    if (size > INT32_MAX
        || !target.info.resize(sizeof(BITMAPINFOHEADER) + table_entries(bits) * sizeof(RGBQUAD)))
        return false;
    BITMAPINFOHEADER header{};
    header.biSize = sizeof header;
    header.biWidth = width_;
    header.biHeight = height_;
    header.biPlanes = 1;
    header.biBitCount = static_cast<WORD>(bits);
    header.biSizeImage = static_cast<DWORD>(size);
    header.biClrUsed = static_cast<DWORD>(table_entries(bits));
    std::memcpy(target.info.data(), &header, sizeof header);
    if (bits <= 8)
        set_colour_table(reinterpret_cast<RGBQUAD*>(target.info.data() + sizeof header), bits, with_palette);
    const auto* const info = reinterpret_cast<const BITMAPINFO*>(target.info.data());
    target.bitmap = CreateDIBSection(memory_dc_, info, DIB_RGB_COLORS, &target.bits, nullptr, 0);
    return target.bitmap && target.bits;
}

void vDISPLAYBMP::clear_surfaces() noexcept
{
    if (dual_surfaced_) {
        PatBlt(memory_dc_, 0, 0, width_, height_, BLACKNESS);
        select_surface(vSURFACE_SECOND);
        PatBlt(memory_dc_, 0, 0, width_, height_, WHITENESS);
        select_surface(vSURFACE_FIRST);
    } else if (transparent_) {
        const RECT all{0, 0, width_, height_};
        const HBRUSH brush = CreateSolidBrush(key_colour_);
        klv::FillRect(memory_dc_, &all, brush);
        DeleteObject(brush);
        key_colour_ = klv::GetPixel(memory_dc_, 0, 0); // what the surface keeps of it
    } else {
        PatBlt(memory_dc_, 0, 0, width_, height_, WHITENESS);
    }
}

void vDISPLAYBMP::select_surface(vDUALSURFACE index) noexcept
{
    current_ = index;
    SelectObject(memory_dc_, surfaces_[static_cast<std::size_t>(index)].bitmap);
}

int vDISPLAYBMP::SwitchSurface(vDUALSURFACE which) noexcept
{
    if (which != vSURFACE_FIRST && !(which == vSURFACE_SECOND && dual_surfaced_))
        return 0;
    select_surface(which);
    return 1;
}

vDEV_TYPE vDISPLAYBMP::DeviceType() const noexcept { return vDEV_BITMAP; }

HDC vDISPLAYBMP::GetWinDC() noexcept
{
    HDCAddRef();
    return current_surface().bitmap ? memory_dc_ : nullptr;
}

int vDISPLAYBMP::ReleaseWinDC() noexcept
{
    HDCReleaseRef();
    return 1;
}

// ---- Drawing onto another device -----------------------------------------------------------------------

int vDISPLAYBMP::Draw(vDEVICE& device, const vRECT& rect, const vRECT* clip) noexcept
{
    if (!current_surface().bitmap)
        return 0;
    const active_dc target(device);
    if (!target || (transparent_ && !prepare_mask()))
        return 0;
    if (clip) {
        device.PushClipArea();
        device.ClipArea(*clip, RGN_AND);
    }
    vRECT place = rect;
    device.LPtoDP(place);
    if (transparent_)
        DrawMaskedBitmap(target, place);
    else
        DrawBitmap(target, place);
    if (clip)
        device.PopClipArea();
    rendered_ = vBMP_RENDERED;
    return 1;
}

// From here on the surface is black where it is transparent, and no longer drawn on.
bool vDISPLAYBMP::prepare_mask() noexcept
{
    if (mask_ready_)
        return mask_ != nullptr;
    mask_ready_ = true;
    GdiFlush();
    if (dual_surfaced_) {
        mask_ = Create16ColMask();
    } else {
        const auto* const info = reinterpret_cast<const BITMAPINFO*>(surfaces_[0].info.data());
        mask_ = CreateMaskFromDibSection(memory_dc_, info, surfaces_[0].bits, key_colour_);
    }
    if (mask_ && !dual_surfaced_)
        ModifySource();
    return mask_ != nullptr;
}

// The surfaces differ exactly where nothing was drawn: there the mask is set, and the first one is black.
HBITMAP vDISPLAYBMP::Create16ColMask() noexcept
{
    const HDC second = CreateCompatibleDC(memory_dc_);
    const HDC mask_dc = CreateCompatibleDC(memory_dc_);
    const HBITMAP mask = CreateBitmap(width_, height_, 1, 1, nullptr);
    select_surface(vSURFACE_FIRST);
    const HGDIOBJ no_bitmap = SelectObject(second, surfaces_[1].bitmap);
    const HGDIOBJ no_mask = SelectObject(mask_dc, mask);
    BitBlt(second, 0, 0, width_, height_, memory_dc_, 0, 0, SRCINVERT);
    SetBkColor(second, RGB(0, 0, 0));
    BitBlt(mask_dc, 0, 0, width_, height_, second, 0, 0, NOTSRCCOPY);
    SelectObject(second, no_bitmap);
    SelectObject(mask_dc, no_mask);
    DeleteDC(second);
    DeleteDC(mask_dc);
    return mask;
}

void vDISPLAYBMP::ModifySource() noexcept
{
    const HDC mask_dc = CreateCompatibleDC(memory_dc_);
    const HGDIOBJ no_mask = SelectObject(mask_dc, mask_);
    const COLORREF background = SetBkColor(memory_dc_, key_colour_);
    const COLORREF text = SetTextColor(memory_dc_, RGB(0, 0, 0));
    BitBlt(memory_dc_, 0, 0, width_, height_, mask_dc, 0, 0, SRCINVERT);
    SetBkColor(memory_dc_, background);
    SetTextColor(memory_dc_, text);
    SelectObject(mask_dc, no_mask);
    DeleteDC(mask_dc);
}

void vDISPLAYBMP::DrawBitmap(HDC target, const RECT& destination) noexcept
{
    copy(target, placed(destination), memory_dc_, width_, height_, SRCCOPY);
}

void vDISPLAYBMP::DrawMaskedBitmap(HDC target, const RECT& destination) noexcept
{
    const placed to(destination);
    const int mode = SetStretchBltMode(target, COLORONCOLOR);
    const HDC mask_dc = CreateCompatibleDC(target);
    const HGDIOBJ no_mask = SelectObject(mask_dc, mask_);
    const COLORREF background = SetBkColor(target, RGB(255, 255, 255));
    const COLORREF text = SetTextColor(target, RGB(0, 0, 0));
    copy(target, to, mask_dc, width_, height_, SRCAND);
    SetBkColor(target, background);
    SetTextColor(target, text);
    copy(target, to, memory_dc_, width_, height_, SRCPAINT);
    SelectObject(mask_dc, no_mask);
    DeleteDC(mask_dc);
    SetStretchBltMode(target, mode);
}

int vDISPLAYBMP::Merge(const vDISPLAYBMP& fade) noexcept
{
    const surface& own = current_surface();
    const surface& mask = fade.current_surface();
    if (!own.bitmap || !mask.bitmap || own.bits_per_pixel() < 24 || mask.bits_per_pixel() != 8
        || fade.width_ != width_ || fade.height_ != height_ || (transparent_ && !prepare_mask()))
        return 0;
    GdiFlush();
    const auto bytes = static_cast<std::size_t>(own.bits_per_pixel() / 8);
    const auto width = static_cast<std::size_t>(width_);
    const std::size_t stride = (width * bytes + 3) / 4 * 4;
    const std::size_t mask_stride = (width + 3) / 4 * 4;
    for (std::size_t y = 0; y < static_cast<std::size_t>(height_); ++y) {
        auto* const row = static_cast<std::uint8_t*>(own.bits) + y * stride;
        const auto* const levels = static_cast<const std::uint8_t*>(mask.bits) + y * mask_stride;
        for (std::size_t x = 0; x < width; ++x)
            for (std::size_t i = x * bytes; i < x * bytes + 3; ++i)
                row[i] = static_cast<std::uint8_t>(row[i] + MulDiv(255 - row[i], levels[x], 256));
    }
    return 1;
}

// ---- Handing out ---------------------------------------------------------------------------------------

BITMAPINFO* vDISPLAYBMP::CopyIntoDIB() noexcept
{
    const surface& s = current_surface();
    if (!s.bitmap)
        return nullptr;
    GdiFlush();
    const auto image = static_cast<std::uint32_t>(image_bytes(width_, height_, s.bits_per_pixel()));
    const auto head = static_cast<std::uint32_t>(s.info.size());
    auto* const block = static_cast<std::uint8_t*>(vMemAlloc(head + image));
    if (!block)
        return nullptr;
    std::memcpy(block, s.info.data(), head);
    std::memcpy(block + head, s.bits, image);
    return reinterpret_cast<BITMAPINFO*>(block);
}

HBITMAP vDISPLAYBMP::RemoveHBitmap() noexcept
{
    surface& s = surfaces_[static_cast<std::size_t>(current_)];
    if (s.bitmap)
        SelectObject(memory_dc_, previous_object_);
    s.bits = nullptr;
    return std::exchange(s.bitmap, nullptr);
}

int vDISPLAYBMP::GetDIBSectionInfo(const BITMAPINFO** info, void** bits) const noexcept
{
    const surface& s = current_surface();
    if (!s.bitmap)
        return 0;
    if (info)
        *info = reinterpret_cast<const BITMAPINFO*>(s.info.data());
    if (bits)
        *bits = s.bits;
    return 1;
}

vRECT vDISPLAYBMP::Size() const noexcept { return {0, 0, width_, height_}; }

std::uint32_t vDISPLAYBMP::GetCachedImageID() const noexcept
{
    return parent_view_ ? parent_view_->CachedImageID() : 0;
}

int vDISPLAYBMP::GrabScreenImage(oIMGCONTEXT&) noexcept
{
    const vCOLOUR black(0, 0, 0);
    vRECT area(0, 0, width_, height_);
    DPtoLP(area);
    area.Right(wrap_sub(area.Right(), 1));
    area.Bottom(wrap_sub(area.Bottom(), 1));
    PushLineSpec();
    PushFillSpec();
    LineSpec(vLINESPEC(vLINE_DASH, black, 2, vCORNER_BEVEL, vDASH_ROUND, nullptr, -1, -1));
    FillSpec(vFILLSPEC(vFILL_NONE, black, black, vANGLE(), vFILL_ALTERNATE, vPOINT()));
    DrawRect(area);
    DrawLine(area.TopLeft(), area.BottomRight());
    DrawLine(area.BottomLeft(), area.TopRight());
    PopFillSpec();
    PopLineSpec();
    return 1;
}

} // namespace klv
