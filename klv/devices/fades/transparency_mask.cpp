#include "klv/devices/fades/transparency_mask.h"

#include "klv/base/buffer.h"
#include "klv/gdi/gdi.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace klv {
namespace {

using pixel = std::uint32_t;

pixel pixel_4(const std::uint8_t* row, std::size_t x)
{
    return x % 2 ? row[x / 2] & 0x0FU : row[x / 2] >> 4U;
}
pixel pixel_8(const std::uint8_t* row, std::size_t x) { return row[x]; }
pixel pixel_16(const std::uint8_t* row, std::size_t x)
{
    return (row[2 * x] | pixel{row[2 * x + 1]} << 8) & 0x7FFFU;
}
pixel pixel_24(const std::uint8_t* row, std::size_t x)
{
    return row[3 * x] | pixel{row[3 * x + 1]} << 8 | pixel{row[3 * x + 2]} << 16;
}
pixel pixel_32(const std::uint8_t* row, std::size_t x)
{
    return row[4 * x] | pixel{row[4 * x + 1]} << 8 | pixel{row[4 * x + 2]} << 16;
}

template <pixel (*Pixel)(const std::uint8_t*, std::size_t)>
void write_line(const std::uint8_t* row, std::uint8_t* mask, pixel key, std::size_t width)
{
    for (std::size_t x = 0; x < width; ++x)
        if (Pixel(row, x) == key)
            mask[x / 8] = static_cast<std::uint8_t>(mask[x / 8] | 0x80U >> x % 8);
}

void copy_line(const std::uint8_t* row, std::uint8_t* mask, pixel, std::size_t width)
{
    std::copy_n(row, (width + 7) / 8, mask);
}

using line_writer = void (*)(const std::uint8_t*, std::uint8_t*, pixel, std::size_t);
line_writer writer_for(int bits)
{
    switch (bits) {
    case 1:
        return copy_line;
    case 4:
        return write_line<pixel_4>;
    case 8:
        return write_line<pixel_8>;
    case 16:
        return write_line<pixel_16>;
    case 24:
        return write_line<pixel_24>;
    case 32:
        return write_line<pixel_32>;
    default:
        return nullptr;
    }
}

pixel index_of(HDC dc, COLORREF key, int bits)
{
    std::array<RGBQUAD, 256> table{};
    const UINT count = GetDIBColorTable(dc, 0, 1U << static_cast<unsigned>(bits), table.data());
    for (UINT i = 0; i < count; ++i)
        if (RGB(table[i].rgbRed, table[i].rgbGreen, table[i].rgbBlue) == (key & 0xFFFFFFU))
            return i;
    return count > 0 ? count - 1 : 0;
}

pixel key_pixel(HDC dc, COLORREF key, int bits)
{
    const pixel red = GetRValue(key);
    const pixel green = GetGValue(key);
    const pixel blue = GetBValue(key);
    if (bits <= 8)
        return index_of(dc, key, bits);
    return bits == 16 ? red >> 3 << 10 | green >> 3 << 5 | blue >> 3 : red << 16 | green << 8 | blue;
}

std::size_t mask_row_bytes(std::size_t width) { return ((width + 7) / 8 + 1) & ~std::size_t{1}; }

} // namespace

HBITMAP CreateMaskFromDibSection(HDC dc, const BITMAPINFO* info, const void* bits, COLORREF key) noexcept
{
    if (!info || !bits || info->bmiHeader.biWidth <= 0 || info->bmiHeader.biHeight <= 0)
        return nullptr;
    const int depth = info->bmiHeader.biBitCount;
    const auto width = static_cast<std::size_t>(info->bmiHeader.biWidth);
    const auto height = static_cast<std::size_t>(info->bmiHeader.biHeight);
    const line_writer write = writer_for(depth);
    vBUFFER<std::uint8_t> mask;
    if (!write || !mask.resize(mask_row_bytes(width) * height))
        return nullptr;
    const pixel wanted = key_pixel(dc, key, depth);
    const std::size_t stride = (width * static_cast<std::size_t>(depth) + 31) / 32 * 4;
    const auto* const rows = static_cast<const std::uint8_t*>(bits);
    for (std::size_t y = 0; y < height; ++y)
        write(rows + (height - 1 - y) * stride, mask.data() + y * mask_row_bytes(width), wanted, width);
    return CreateBitmap(info->bmiHeader.biWidth, info->bmiHeader.biHeight, 1, 1, mask.data());
}

} // namespace klv
