#pragma once

#include "klv/devices/device.h"
#include "klv/gdi/gdi.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace klv::test {

/// A 32-bit surface in memory, white at first, with a context to draw on.
class surface {
public:
    surface(int width, int height)
        : width_(width)
        , height_(height)
        , dc_(CreateCompatibleDC(nullptr))
    {
        BITMAPINFO info{};
        info.bmiHeader.biSize = sizeof info.bmiHeader;
        info.bmiHeader.biWidth = width;
        info.bmiHeader.biHeight = -height;
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 32;
        void* bits = nullptr;
        bitmap_ = CreateDIBSection(dc_, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
        pixels_ = static_cast<const std::uint32_t*>(bits);
        old_ = SelectObject(dc_, bitmap_);
        PatBlt(dc_, 0, 0, width, height, WHITENESS);
    }
    ~surface()
    {
        SelectObject(dc_, old_);
        DeleteObject(bitmap_);
        DeleteDC(dc_);
    }
    surface(const surface&) = delete;
    surface& operator=(const surface&) = delete;

    HDC dc() const { return dc_; }

    /// The pixel as 0x00rrggbb.
    std::uint32_t at(int x, int y) const
    {
        return pixels_[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_)
                   + static_cast<std::size_t>(x)]
            & 0xFFFFFFU;
    }

    /// One line of text for each row: '.' white, '#' black, the first letter of a pure colour, '?' others.
    std::string art() const
    {
        std::string text;
        for (int y = 0; y < height_; ++y) {
            for (int x = 0; x < width_; ++x)
                text += letter(at(x, y));
            text += '\n';
        }
        return text;
    }

    int count(std::uint32_t colour) const
    {
        int pixels = 0;
        for (int y = 0; y < height_; ++y)
            for (int x = 0; x < width_; ++x)
                pixels += at(x, y) == colour;
        return pixels;
    }

private:
    static char letter(std::uint32_t colour)
    {
        switch (colour) {
        case 0xFFFFFF:
            return '.';
        case 0x000000:
            return '#';
        case 0xFF0000:
            return 'R';
        case 0x00FF00:
            return 'G';
        case 0x0000FF:
            return 'B';
        default:
            return '?';
        }
    }

    int width_;
    int height_;
    HDC dc_;
    HBITMAP bitmap_ = nullptr;
    HGDIOBJ old_ = nullptr;
    const std::uint32_t* pixels_ = nullptr;
};

/// Rows of a drawing, without the line break that a raw string starts with and its indentation.
inline std::string drawing(std::string_view text)
{
    std::string rows;
    for (const char c : text)
        if (c != ' ' && !(c == '\n' && rows.empty()))
            rows += c;
    return rows;
}

inline vLINESPEC line(int width, vCORNERTYPE corner = vCORNER_BEVEL, const vCOLOUR& colour = vCOLOUR())
{
    return {
        vLINE_SOLID, colour, width, corner, vDASH_FLAT, nullptr, vLINESPEC::no_arrow, vLINESPEC::no_arrow};
}

inline vLINESPEC no_line()
{
    return {vLINE_NONE, vCOLOUR(), 0, vCORNER_BEVEL, vDASH_FLAT, nullptr, vLINESPEC::no_arrow,
        vLINESPEC::no_arrow};
}

inline vFILLSPEC fill(vFILLTYPE type, const vCOLOUR& from = vCOLOUR(), const vCOLOUR& to = vCOLOUR(),
    int angle = 0, vFILLMODE mode = vFILL_ALTERNATE)
{
    return {type, from, to, vANGLE(static_cast<short>(angle)), mode, vPOINT()};
}

} // namespace klv::test
