#include "klv/devices/fill/scanline_fill.h"

#include "klv/core/integer_math.h"
#include "klv/devices/device.h"
#include "klv/devices/fill/graduated_fill.h"
#include "klv/devices/outline/coordinates.h"
#include "klv/gdi/gdi.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace klv {
namespace {

constexpr int pattern_rows = 8;
constexpr int cell_width = 4;
constexpr int no_level = 255;
// Wider boxes than any surface are not given a pattern.
constexpr LONG widest_pattern = 1 << 16;

int turn_of(const LINESECT& crossing) noexcept { return crossing.direction ? 1 : -1; }

} // namespace

int CalcLineIntersects(
    std::span<const LINESEG> edges, std::span<LINESECT, most_crossings> out, int y) noexcept
{
    std::size_t count = 0;
    for (const LINESEG& edge : edges)
        if (count < out.size() && edge.Intersect(y))
            out[count++] = {edge.CalcIntersect(y), edge.direction};
    std::sort(out.begin(), out.begin() + static_cast<std::ptrdiff_t>(count),
        [](const LINESECT& a, const LINESECT& b) { return a.x < b.x; });
    return static_cast<int>(count);
}

void DrawSimple(HDC dc, int y, int x0, int x1, const RECT& clip, HDC pattern) noexcept
{
    x0 = std::max(x0, static_cast<int>(clip.left));
    x1 = std::min(x1, static_cast<int>(clip.right));
    if (x0 >= x1)
        return;
    const int row = ((y % pattern_rows) + pattern_rows) % pattern_rows;
    BitBlt(dc, x0, y, x1 - x0, 1, pattern, x0 - clip.left, row, SRCCOPY);
}

void DrawAlternate(HDC dc, int y, std::span<const LINESECT> crossings, const RECT& clip, HDC pattern) noexcept
{
    for (std::size_t i = 0; i + 1 < crossings.size(); i += 2)
        DrawSimple(dc, y, crossings[i].x, crossings[i + 1].x, clip, pattern);
}

void DrawWinding(HDC dc, int y, std::span<const LINESECT> crossings, const RECT& clip, HDC pattern) noexcept
{
    int ahead = 0;
    for (std::size_t i = 1; i < crossings.size(); ++i)
        ahead += turn_of(crossings[i]);
    std::size_t start = 0;
    for (std::size_t i = 1; i < crossings.size(); ++i) {
        ahead -= turn_of(crossings[i]);
        if (ahead == 0 && start < i) {
            DrawSimple(dc, y, crossings[start].x, crossings[i].x, clip, pattern);
            start = i + 1;
        }
    }
}

FILLINFO::FILLINFO(HDC dc, const vSHAPE& shape, vDEVICE& device) noexcept
    : type_(device.FillSpec().Type())
    , cosine_(std::cos(fill_angle(device) * std::numbers::pi / 180))
    , sine_(std::sin(fill_angle(device) * std::numbers::pi / 180))
    , from_(device.FillSpec().ColourFrom().PackedRGB())
    , to_(device.FillSpec().ColourTo().PackedRGB())
{
    vRECT box = shape.BoundBox();
    device.LPtoDP(box);
    box_ = {std::min(box.Left(), box.Right()), std::min(box.Top(), box.Bottom()),
        std::max(box.Left(), box.Right()), std::max(box.Top(), box.Bottom())};
    const LONG width = std::min(box_.right - box_.left + 1, widest_pattern);
    const auto cells = static_cast<std::size_t>((width + cell_width - 1) / cell_width);
    if (!levels_.resize(cells) || !painted_.resize(cells))
        return;
    std::fill(painted_.begin(), painted_.end(), std::uint8_t{no_level});
    pattern_ = CreateCompatibleDC(dc);
    bitmap_ = CreateCompatibleBitmap(dc, width, pattern_rows);
    old_bitmap_ = SelectObject(pattern_, bitmap_);
}

FILLINFO::~FILLINFO()
{
    if (pattern_) {
        SelectObject(pattern_, old_bitmap_);
        DeleteDC(pattern_);
    }
    if (bitmap_)
        DeleteObject(bitmap_);
    for (HBRUSH brush : brushes_)
        if (brush)
            DeleteObject(brush);
}

int FILLINFO::level_at(double x, double y) const noexcept
{
    constexpr int top = levels - 1;
    const double half_width = std::max(1.0, (static_cast<double>(box_.right) - box_.left) / 2);
    const double half_height = std::max(1.0, (static_cast<double>(box_.bottom) - box_.top) / 2);
    const double dx = x - (box_.left + half_width);
    const double dy = y - (box_.top + half_height);
    double part = 0;
    if (type_ == vFILL_RADIAL || type_ == vFILL_RADIAL_QUADRATIC) {
        const double square = (dx * dx + dy * dy) / (half_width * half_width + half_height * half_height);
        part = type_ == vFILL_RADIAL ? std::sqrt(square) : square;
    } else {
        const double reach = std::abs(half_width * cosine_) + std::abs(half_height * sine_);
        part = 0.5 + (dx * cosine_ + dy * sine_) / (2 * std::max(1.0, reach));
        if (type_ == vFILL_LINEAR_TWO_WAY)
            part = 1 - std::abs(2 * part - 1);
    }
    part = std::clamp(part, 0.0, 1.0);
    if (type_ == vFILL_LINEAR_LOGARITHMIC)
        return std::min<int>(Log(static_cast<short>(part * 256)), top);
    return static_cast<int>(part * top + 0.5);
}

void FILLINFO::SetPattern(int y) noexcept
{
    for (std::size_t i = 0; i < levels_.size(); ++i)
        levels_[i] = static_cast<std::uint8_t>(
            level_at(box_.left + (static_cast<double>(i) + 0.5) * cell_width, y + 0.5));
}

HBRUSH FILLINFO::brush(int level) noexcept
{
    HBRUSH& cached = brushes_[static_cast<std::size_t>(level)];
    if (!cached)
        cached = CreateSolidBrush(vDEVICE::rgb_blend(from_, to_, level, levels));
    return cached;
}

void FILLINFO::Update(int y) noexcept
{
    SetPattern(y);
    for (std::size_t i = 0; i < levels_.size();) {
        std::size_t end = i + 1;
        if (levels_[i] != painted_[i]) {
            while (end < levels_.size() && levels_[end] == levels_[i] && painted_[end] != levels_[end])
                ++end;
            const RECT run{
                static_cast<LONG>(i) * cell_width, 0, static_cast<LONG>(end) * cell_width, pattern_rows};
            klv::FillRect(pattern_, &run, brush(levels_[i]));
            std::copy(levels_.begin() + i, levels_.begin() + end, painted_.begin() + i);
        }
        i = end;
    }
}

} // namespace klv
