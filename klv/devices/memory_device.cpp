#include "klv/devices/memory_device.h"

#include "klv/devices/screen.h"
#include "klv/gdi/gdi.h"

#include <algorithm>
#include <cstring>

namespace klv {
namespace {

constexpr int many_colours = 256;
constexpr int few_colours = 16;
// A screen with no more colours than this gets the smaller of the two bitmaps.
constexpr int largest_few_colours_screen = 8;

std::uint32_t row_bytes(std::uint32_t width, std::uint32_t bits) { return (width * bits + 31) / 32 * 4; }

BITMAPINFOHEADER make_header(int width, int height, int colours, std::uint32_t image_size)
{
    BITMAPINFOHEADER header{};
    header.biSize = sizeof header;
    header.biWidth = width;
    header.biHeight = height;
    header.biPlanes = 1;
    header.biBitCount = colours == many_colours ? 8 : 4;
    header.biSizeImage = image_size;
    header.biClrUsed = static_cast<DWORD>(colours);
    return header;
}

void set_colour_table(RGBQUAD* table, int colours)
{
    if (colours != many_colours) {
        std::ranges::copy(default_16_colours, table);
        return;
    }
    vSCREEN::Create256Palette();
    const PALETTEENTRY* const entries = vSCREEN::LogPalette()->palPalEntry;
    std::transform(entries, entries + many_colours, table, quad_of);
}

} // namespace

vMEMDEVICE::vMEMDEVICE() noexcept
    : vDEVICE(nullptr)
{
}

vMEMDEVICE::vMEMDEVICE(std::uint16_t width, std::uint16_t height) noexcept
    : vMEMDEVICE()
{
    Prepare(width, height);
}

vMEMDEVICE::~vMEMDEVICE() { release_bitmap(); }

void vMEMDEVICE::release_context() noexcept
{
    if (!memory_dc_)
        return;
    SelectObject(memory_dc_, previous_bitmap_);
    DeleteDC(memory_dc_);
    memory_dc_ = nullptr;
}

void vMEMDEVICE::release_bitmap() noexcept
{
    release_context();
    dc_references_ = 0;
    if (bitmap_)
        DeleteObject(bitmap_);
    bitmap_ = nullptr;
    bits_ = nullptr;
    packed_dib_.release();
}

int vMEMDEVICE::Prepare(std::uint16_t width, std::uint16_t height) noexcept
{
    release_bitmap();
    width_ = width;
    height_ = height;
    return Init();
}

int vMEMDEVICE::Init() noexcept
{
    const int colours = GetScreen().GetNoColours() > largest_few_colours_screen ? many_colours : few_colours;
    const std::uint64_t size = std::uint64_t{row_bytes(width_, colours == many_colours ? 8 : 4)} * height_;
    const std::size_t head = sizeof(BITMAPINFOHEADER) + static_cast<std::size_t>(colours) * sizeof(RGBQUAD);
    if (size == 0 || size > INT32_MAX || !packed_dib_.resize(head + size))
        return 0;
    image_size_ = static_cast<std::uint32_t>(size);
    auto* const info = reinterpret_cast<BITMAPINFO*>(packed_dib_.data());
    info->bmiHeader = make_header(width_, height_, colours, image_size_);
    set_colour_table(reinterpret_cast<RGBQUAD*>(packed_dib_.data() + sizeof(BITMAPINFOHEADER)), colours);
    bitmap_ = CreateDIBSection(nullptr, info, DIB_RGB_COLORS, &bits_, nullptr, 0);
    if (!bitmap_ || !bits_) {
        release_bitmap();
        return 0;
    }
    InitBitmap(bits_, colours, image_size_);
    DescribeContext(GetWinDC());
    ReleaseWinDC();
    return 1;
}

void vMEMDEVICE::InitBitmap(void* bits, int colours, std::uint32_t size) noexcept
{
    std::memset(bits, colours == many_colours ? palette_white : 0xFF, size);
}

HDC vMEMDEVICE::GetWinDC() noexcept
{
    if (!bitmap_)
        return nullptr;
    if (!memory_dc_) {
        memory_dc_ = CreateCompatibleDC(nullptr);
        if (!memory_dc_)
            return nullptr;
        previous_bitmap_ = SelectObject(memory_dc_, bitmap_);
        SelectClip(memory_dc_);
    }
    ++dc_references_;
    return memory_dc_;
}

int vMEMDEVICE::ReleaseWinDC() noexcept
{
    if (dc_references_ > 0 && --dc_references_ == 0)
        release_context();
    return 1;
}

BITMAPINFO* vMEMDEVICE::GetDIB() noexcept
{
    if (!bits_)
        return nullptr;
    GdiFlush();
    std::memcpy(packed_dib_.data() + packed_dib_.size() - image_size_, bits_, image_size_);
    return reinterpret_cast<BITMAPINFO*>(packed_dib_.data());
}

} // namespace klv
