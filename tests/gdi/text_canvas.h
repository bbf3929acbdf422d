#pragma once

#include "klv/gdi/gdi.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace klv::testing {

/// A white 32-bit surface to write on, and questions about the ink on it.
class text_canvas {
public:
    explicit text_canvas(int width = 400, int height = 200)
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
        bitmap_ = CreateDIBSection(dc_, &info, DIB_RGB_COLORS, &bits_, nullptr, 0);
        SelectObject(dc_, bitmap_);
        SetBkMode(dc_, TRANSPARENT);
        clear();
    }
    ~text_canvas()
    {
        DeleteDC(dc_);
        DeleteObject(bitmap_);
        if (font_)
            DeleteObject(font_);
    }
    text_canvas(const text_canvas&) = delete;
    text_canvas& operator=(const text_canvas&) = delete;

    operator HDC() const { return dc_; }

    void clear()
    {
        std::memset(bits_, 0xFF, static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_) * 4);
    }

    /// Selects a font of a face; change the description first for more than face and height.
    void font(const char* face, int height, std::uint8_t charset = ANSI_CHARSET)
    {
        LOGFONTA description{};
        description.lfHeight = height;
        description.lfCharSet = charset;
        std::strncpy(description.lfFaceName, face, LF_FACESIZE - 1);
        font(description);
    }
    void font(const LOGFONTA& description)
    {
        const HFONT made = CreateFontIndirectA(&description);
        SelectObject(dc_, made);
        if (font_)
            DeleteObject(font_);
        font_ = made;
    }
    void write(int x, int y, std::string_view text)
    {
        TextOutA(dc_, x, y, text.data(), static_cast<int>(text.size()));
    }

    COLORREF at(int x, int y) const
    {
        std::uint32_t pixel = 0;
        std::memcpy(&pixel,
            static_cast<const std::uint8_t*>(bits_)
                + (std::size_t(y) * std::size_t(width_) + std::size_t(x)) * 4,
            4);
        return RGB(pixel >> 16 & 0xFF, pixel >> 8 & 0xFF, pixel & 0xFF);
    }
    bool inked(int x, int y) const { return at(x, y) != RGB(255, 255, 255); }

    /// The smallest rectangle that holds all ink; empty when there is none.
    RECT ink() const
    {
        RECT box{width_, height_, 0, 0};
        for (int y = 0; y < height_; ++y)
            for (int x = 0; x < width_; ++x)
                if (inked(x, y))
                    box = {x < box.left ? x : box.left, y < box.top ? y : box.top,
                        x >= box.right ? x + 1 : box.right, y >= box.bottom ? y + 1 : box.bottom};
        return box.left < box.right ? box : RECT{};
    }
    int ink_pixels() const
    {
        int count = 0;
        for (int y = 0; y < height_; ++y)
            for (int x = 0; x < width_; ++x)
                count += inked(x, y);
        return count;
    }
    std::string_view bytes() const
    {
        return {static_cast<const char*>(bits_),
            static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_) * 4};
    }

private:
    int width_;
    int height_;
    HDC dc_;
    HBITMAP bitmap_ = nullptr;
    HFONT font_ = nullptr;
    void* bits_ = nullptr;
};

} // namespace klv::testing
