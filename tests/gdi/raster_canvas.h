#pragma once

#include "klv/gdi/gdi.h"

#include <cstdint>
#include <string>
#include <vector>

namespace klv {

/// A small surface to draw on, white at first, read back as text: '.' white, '#' black, '?' anything else;
/// on request other colours get their own letters.
class raster_canvas {
public:
    raster_canvas(INT width, INT height, WORD bits = 32)
        : width_(width)
        , height_(height)
        , dc_(CreateCompatibleDC(nullptr))
    {
        struct {
            BITMAPINFOHEADER header{};
            RGBQUAD colours[256]{};
        } info;
        info.header = {sizeof info.header, width, -height, 1, bits, BI_RGB, 0, 0, 0, 0, 0};
        // Black, white and a few more: exact colours for depths with a table.
        const RGBQUAD table[]
            = {{0, 0, 0, 0}, {255, 255, 255, 0}, {0, 0, 255, 0}, {0, 255, 0, 0}, {255, 0, 0, 0}};
        for (std::size_t i = 0; i < std::size(table); ++i)
            info.colours[i] = table[i];
        bitmap_
            = CreateDIBSection(dc_, reinterpret_cast<BITMAPINFO*>(&info), DIB_RGB_COLORS, &bits_, nullptr, 0);
        old_ = SelectObject(dc_, bitmap_);
        clear();
    }
    ~raster_canvas()
    {
        SelectObject(dc_, old_);
        DeleteObject(bitmap_);
        DeleteDC(dc_);
    }
    raster_canvas(const raster_canvas&) = delete;
    raster_canvas& operator=(const raster_canvas&) = delete;

    operator HDC() const { return dc_; }
    [[nodiscard]] HBITMAP bitmap() const { return bitmap_; }
    [[nodiscard]] std::uint8_t* bits() const { return static_cast<std::uint8_t*>(bits_); }
    void clear()
    {
        const RECT all{0, 0, width_, height_};
        FillRect(dc_, &all, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
    }

    /// Rows separated by newlines, the first newline in front, so that expectations line up in the source.
    [[nodiscard]] std::string art() const
    {
        std::string text;
        for (INT y = 0; y < height_; ++y) {
            text += '\n';
            for (INT x = 0; x < width_; ++x)
                text += letter(GetPixel(dc_, x, y));
        }
        return text;
    }

private:
    static char letter(COLORREF colour)
    {
        switch (colour) {
        case RGB(255, 255, 255):
            return '.';
        case RGB(0, 0, 0):
            return '#';
        case RGB(255, 0, 0):
            return 'r';
        case RGB(0, 255, 0):
            return 'g';
        case RGB(0, 0, 255):
            return 'b';
        default:
            return '?';
        }
    }

    INT width_;
    INT height_;
    HDC dc_;
    HBITMAP bitmap_ = nullptr;
    HGDIOBJ old_ = nullptr;
    void* bits_ = nullptr;
};

/// An object that is selected for a while and deleted afterwards.
template <class Handle> class selected {
public:
    selected(HDC dc, Handle object)
        : dc_(dc)
        , object_(object)
        , old_(SelectObject(dc, object))
    {
    }
    ~selected()
    {
        SelectObject(dc_, old_);
        DeleteObject(object_);
    }
    selected(const selected&) = delete;
    selected& operator=(const selected&) = delete;

private:
    HDC dc_;
    Handle object_;
    HGDIOBJ old_;
};

inline selected<HPEN> use_pen(HDC dc, UINT style, INT width, COLORREF colour)
{
    return {dc, CreatePen(style, width, colour)};
}
inline selected<HBRUSH> use_brush(HDC dc, COLORREF colour) { return {dc, CreateSolidBrush(colour)}; }

inline constexpr COLORREF black = RGB(0, 0, 0);
inline constexpr COLORREF white = RGB(255, 255, 255);
inline constexpr COLORREF red = RGB(255, 0, 0);
inline constexpr COLORREF green = RGB(0, 255, 0);
inline constexpr COLORREF blue = RGB(0, 0, 255);

} // namespace klv
