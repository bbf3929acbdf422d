#include "klv/metafiles/detail/text_bitmap.h"

#include "klv/base/buffer.h"
#include "klv/core/string.h"
#include "klv/devices/device.h"
#include "klv/devices/font_detail.h"
#include "klv/gdi/gdi.h"

#include <cstdint>
#include <cstring>

namespace klv {

namespace {

// A line of text across a page at 1200 dpi fits; a font as large as a page does not, and a record of a few
// bytes may not cost more.
constexpr std::uint64_t max_bytes = 1 << 20;

// A platform object that is deleted with its owner.
template <class Handle> class owned_object {
public:
    explicit owned_object(Handle handle)
        : handle_(handle)
    {
    }
    ~owned_object()
    {
        if (handle_)
            DeleteObject(handle_);
    }
    owned_object(const owned_object&) = delete;
    owned_object& operator=(const owned_object&) = delete;
    operator Handle() const { return handle_; }

private:
    Handle handle_;
};

// A memory context, given back with everything deselected.
class memory_dc {
public:
    explicit memory_dc(HDC like)
        : dc_(CreateCompatibleDC(like))
        , saved_(dc_ ? SaveDC(dc_) : 0)
    {
    }
    ~memory_dc()
    {
        if (dc_) {
            RestoreDC(dc_, saved_);
            DeleteDC(dc_);
        }
    }
    memory_dc(const memory_dc&) = delete;
    memory_dc& operator=(const memory_dc&) = delete;
    operator HDC() const { return dc_; }

private:
    HDC dc_;
    int saved_;
};

HFONT upright(HFONT font)
{
    LOGFONTA description{};
    if (!font || !GetObjectA(font, sizeof(description), &description))
        return nullptr;
    description.lfEscapement = 0;
    description.lfOrientation = 0;
    return CreateFontIndirectA(&description);
}

void draw(HDC dc, const vSTRING& text, int width, int height)
{
    PatBlt(dc, 0, 0, width, height, WHITENESS);
    SetTextColor(dc, RGB(0, 0, 0));
    SetBkMode(dc, TRANSPARENT);
    SetTextAlign(dc, TA_BASELINE | TA_LEFT);
    SetTextJustification(dc, 0, 0);
    SetTextCharacterExtra(dc, 0);
    TextOutA(dc, 0, height / 2, text(), text.Length());
}

std::unique_ptr<oMEMDIB> read_out(HDC dc, HBITMAP bitmap, int width, int height)
{
    const std::uint64_t pixels
        = dib_stride(static_cast<std::uint32_t>(width), 1) * static_cast<unsigned>(height);
    constexpr std::size_t header_size = sizeof(BITMAPINFOHEADER) + 2 * sizeof(RGBQUAD);
    vBUFFER<std::uint8_t> packed;
    if (!packed.resize(header_size + pixels))
        return nullptr;
    BITMAPINFOHEADER header{};
    header.biSize = sizeof(header);
    header.biWidth = width;
    header.biHeight = height;
    header.biPlanes = 1;
    header.biBitCount = 1;
    header.biSizeImage = static_cast<std::uint32_t>(pixels);
    std::memcpy(packed.data(), &header, sizeof(header));
    auto* const info = reinterpret_cast<BITMAPINFO*>(packed.data());
    if (!GetDIBits(
            dc, bitmap, 0, static_cast<UINT>(height), packed.data() + header_size, info, DIB_RGB_COLORS))
        return nullptr;
    std::unique_ptr<oMEMDIB> result(new oMEMDIB(info, 0));
    return result && result->HasPixels() ? std::move(result) : nullptr;
}

} // namespace

std::unique_ptr<oMEMDIB> text_as_bitmap(vDEVICE& device, const vSTRING& text) noexcept
{
    const active_dc device_dc(device);
    vFONTDETAIL* const detail = device.GetCurFontDetail();
    if (!device_dc || !detail || text.Null())
        return nullptr;
    const int width = detail->GetDefStringWidth(device, text) + 1;
    const int height = 2 * detail->GetCharHeight();
    if (width <= 1 || height <= 0
        || dib_stride(static_cast<std::uint32_t>(width), 1) * static_cast<unsigned>(height) > max_bytes)
        return nullptr;

    const owned_object<HFONT> font(upright(device.ActivateFont(0)));
    const owned_object<HBITMAP> bitmap(CreateBitmap(width, height, 1, 1, nullptr));
    {
        const memory_dc dc(device_dc);
        if (!font || !bitmap || !dc)
            return nullptr;
        SelectObject(dc, bitmap);
        SelectObject(dc, font);
        draw(dc, text, width, height);
    }
    return read_out(device_dc, bitmap, width, height);
}

} // namespace klv
