#include "klv/devices/bitmap/bitmap_sampler.h"

#include "klv/bitmaps/dib_context.h"
#include "klv/bitmaps/memory_dib.h"
#include "klv/devices/bitmap/colour_match.h"
#include "klv/gdi/gdi.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace klv {
namespace {

constexpr int bytes_per_pixel = 3;
constexpr std::uint16_t bits_per_pixel = 24;
// A line of a bitmap is padded to four bytes.
constexpr std::size_t row_padding = 3;
// Pixel centres.
constexpr double half = 0.5;

affine_map logical_to_device(const unit_mapping& units) noexcept
{
    const double x = static_cast<double>(units.x.device) / units.x.logical;
    const double y = static_cast<double>(units.y.device) / units.y.logical;
    return {x, 0, static_cast<double>(units.origin_x) * x, 0, y, static_cast<double>(units.origin_y) * y};
}

affine_map map_of(const IDistort* distort) noexcept
{
    if (!distort || !distort->IsLinear())
        return {};
    return {distort->Coefficient(0), distort->Coefficient(1), distort->Coefficient(2),
        distort->Coefficient(3), distort->Coefficient(4), distort->Coefficient(5)};
}

RECT within_bitmap(const vRECT& rect, int width, int height) noexcept
{
    return {std::clamp(std::min(rect.Left(), rect.Right()), 0, width),
        std::clamp(std::min(rect.Top(), rect.Bottom()), 0, height),
        std::clamp(std::max(rect.Left(), rect.Right()), 0, width),
        std::clamp(std::max(rect.Top(), rect.Bottom()), 0, height)};
}

// Logical size of one tile, and where the first one starts.
struct tiling {
    double width, height;
    double left, top;
};

tiling tiles_of(const oDIBCONTEXT& context) noexcept
{
    const vRECT& target = context.GetDstRect();
    const vTILEINFO& tiles = context.GetTileInfo();
    tiling result{static_cast<double>(target.Right()) - target.Left(),
        static_cast<double>(target.Bottom()) - target.Top(), static_cast<double>(target.Left()),
        static_cast<double>(target.Top())};
    if (tiles.GetType() == vTILE_NONE)
        return result;
    if (context.QyFixedTile() && tiles.GetTileSize().Width() > 0 && tiles.GetTileSize().Height() > 0) {
        return {std::copysign(tiles.GetTileSize().Width(), result.width),
            std::copysign(tiles.GetTileSize().Height(), result.height), result.left + tiles.GetTileOrigin().x,
            result.top + tiles.GetTileOrigin().y};
    }
    result.width /= tiles.GetTilesAcross();
    result.height /= tiles.GetTilesDown();
    return result;
}

int wrapped(double position, int first, int last) noexcept
{
    const double size = last - first;
    const double offset = position - first;
    const double inside = offset - std::floor(offset / size) * size;
    return std::clamp(first + static_cast<int>(inside), first, last - 1);
}

} // namespace

affine_map affine_map::then(const affine_map& n) const noexcept
{
    return {n.a * a + n.b * d, n.a * b + n.b * e, n.a * c + n.b * f + n.c, n.d * a + n.e * d,
        n.d * b + n.e * e, n.d * c + n.e * f + n.f};
}

bool affine_map::invertible() const noexcept
{
    const double determinant = a * e - b * d;
    return std::isfinite(determinant) && std::abs(determinant) > 1e-12 && std::isfinite(c)
        && std::isfinite(f);
}

affine_map affine_map::inverse() const noexcept
{
    const double determinant = a * e - b * d;
    return {e / determinant, -b / determinant, (b * f - c * e) / determinant, -d / determinant,
        a / determinant, (c * d - a * f) / determinant};
}

bool place_bitmap(const unit_mapping& units, const oDIBCONTEXT& context, int width, int height,
    bitmap_placement& out) noexcept
{
    const vRECT& target = context.GetDstRect();
    out.source = within_bitmap(context.GetSrcRect(), width, height);
    const double source_width = out.source.right - out.source.left;
    const double source_height = out.source.bottom - out.source.top;
    const tiling tiles = tiles_of(context);
    if (source_width < 1 || source_height < 1 || tiles.width == 0 || tiles.height == 0)
        return false;

    const double scale_x = tiles.width / source_width;
    const double scale_y = tiles.height / source_height;
    const affine_map to_logical{
        scale_x, 0, tiles.left - out.source.left * scale_x, 0, scale_y, tiles.top - out.source.top * scale_y};
    out.to_device = to_logical.then(map_of(context.GetDistort())).then(logical_to_device(units));

    const affine_map to_pixels = to_logical.invertible() ? to_logical.inverse() : affine_map{};
    const double u0 = to_pixels.x(target.Left(), target.Top());
    const double u1 = to_pixels.x(target.Right(), target.Bottom());
    const double v0 = to_pixels.y(target.Left(), target.Top());
    const double v1 = to_pixels.y(target.Right(), target.Bottom());
    out.first_u = std::min(u0, u1);
    out.last_u = std::max(u0, u1);
    out.first_v = std::min(v0, v1);
    out.last_v = std::max(v0, v1);
    return out.to_device.invertible();
}

bitmap_sampler::bitmap_sampler(const oMEMDIB& bitmap, const oMEMDIB& keyed, const bitmap_placement& placement,
    const transparency_key& key) noexcept
    : bitmap_(bitmap)
    , keyed_(keyed)
    , placement_(placement)
    , to_bitmap_(placement.to_device.inverse())
    , key_(key)
{
}

RECT bitmap_sampler::device_bounds() const noexcept
{
    const bitmap_placement& p = placement_;
    const double us[] = {p.first_u, p.last_u};
    const double vs[] = {p.first_v, p.last_v};
    double left = max_device_coordinate, top = left, right = -left, bottom = -left;
    for (const double u : us) {
        for (const double v : vs) {
            left = std::min(left, p.to_device.x(u, v));
            right = std::max(right, p.to_device.x(u, v));
            top = std::min(top, p.to_device.y(u, v));
            bottom = std::max(bottom, p.to_device.y(u, v));
        }
    }
    return {truncated(std::floor(left)), truncated(std::floor(top)), truncated(std::ceil(right)),
        truncated(std::ceil(bottom))};
}

void bitmap_sampler::draw(HDC dc) noexcept
{
    RECT area{};
    if (GetClipBox(dc, &area) == ERROR_REGION)
        return;
    const RECT bounds = device_bounds();
    area = {std::max(area.left, bounds.left), std::max(area.top, bounds.top),
        std::min(area.right, bounds.right), std::min(area.bottom, bounds.bottom)};
    if (area.left >= area.right || area.top >= area.bottom)
        return;
    if (!row_.resize(static_cast<std::size_t>(area.right - area.left) * bytes_per_pixel + row_padding))
        return;
    for (int y = area.top; y < area.bottom; ++y)
        draw_row(dc, y, area.left, area.right);
}

const std::uint8_t* bitmap_sampler::pixel(double u, double v) const noexcept
{
    const bitmap_placement& p = placement_;
    if (!(p.first_u <= u && u < p.last_u && p.first_v <= v && v < p.last_v))
        return nullptr;
    const std::size_t at
        = static_cast<std::size_t>(wrapped(u, p.source.left, p.source.right)) * bytes_per_pixel;
    const int line = bitmap_.Height() - 1 - wrapped(v, p.source.top, p.source.bottom);
    if (key_.match) {
        const std::uint8_t* const keyed = keyed_.line(line).data() + at;
        if ((*key_.match)({keyed[0], keyed[1], keyed[2], 0}) == key_.matching_are_transparent)
            return nullptr;
    }
    return bitmap_.line(line).data() + at;
}

void bitmap_sampler::draw_row(HDC dc, int y, int left, int right) noexcept
{
    int run_start = left;
    int run = 0;
    const double device_y = y + half;
    for (int x = left; x < right; ++x) {
        const double device_x = x + half;
        const std::uint8_t* const colour
            = pixel(to_bitmap_.x(device_x, device_y), to_bitmap_.y(device_x, device_y));
        if (!colour) {
            put_run(dc, run_start, y, run);
            run = 0;
            continue;
        }
        if (run == 0)
            run_start = x;
        std::memcpy(row_.data() + static_cast<std::size_t>(run) * bytes_per_pixel, colour, bytes_per_pixel);
        ++run;
    }
    put_run(dc, run_start, y, run);
}

void bitmap_sampler::put_run(HDC dc, int x, int y, int count) noexcept
{
    if (count == 0)
        return;
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = count;
    info.bmiHeader.biHeight = 1;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = bits_per_pixel;
    SetDIBitsToDevice(dc, x, y, static_cast<DWORD>(count), 1, 0, 0, 0, 1, row_.data(), &info, DIB_RGB_COLORS);
}

} // namespace klv
