#pragma once

#include "klv/base/buffer.h"
#include "klv/base/types.h"
#include "klv/devices/outline/point_list.h"

#include <array>
#include <cstdint>
#include <span>

/// Filling row by row from a pattern context whose eight rows repeat down the page, for applications that
/// paint areas themselves. The devices' own fills hand whole polygons to the platform instead.
namespace klv {

class vDEVICE;
class vSHAPE;

/// Where an edge crosses a row.
struct LINESECT {
    int x;
    int direction; ///< of the edge (LINESEG)
};

/// Crossings of one row that are looked at; those beyond are left out.
inline constexpr std::size_t most_crossings = 50;

/// The crossings of row y, from left to right. \return their number
int CalcLineIntersects(
    std::span<const LINESEG> edges, std::span<LINESECT, most_crossings> out, int y) noexcept;

/// Copies pixels x0 to x1 (excluded) of row y from the pattern, as far as they lie between the rectangle's
/// left and right edges.
void DrawSimple(HDC dc, int y, int x0, int x1, const RECT& clip, HDC pattern) noexcept;
/// The spans between every other pair of crossings.
void DrawAlternate(
    HDC dc, int y, std::span<const LINESECT> crossings, const RECT& clip, HDC pattern) noexcept;
/// The spans that edges wind round.
void DrawWinding(HDC dc, int y, std::span<const LINESECT> crossings, const RECT& clip, HDC pattern) noexcept;

/// The pattern of a graduated fill for one row after another: cells of four pixels in 64 levels between
/// the device's two fill colours.
class FILLINFO {
public:
    FILLINFO(HDC dc, const vSHAPE& shape, vDEVICE& device) noexcept;
    ~FILLINFO();
    FILLINFO(const FILLINFO&) = delete;
    FILLINFO& operator=(const FILLINFO&) = delete;

    HDC PatternDC() const noexcept { return pattern_; }
    /// The shape's box in device pixels; the pattern is as wide.
    const RECT& Box() const noexcept { return box_; }
    /// Works out the levels of row y.
    void SetPattern(int y) noexcept;
    /// Paints the cells whose level changed since the last row.
    void Update(int y) noexcept;
    /// Level of a cell of the current row, 0 (the first colour) to 63.
    int Level(std::size_t cell) const noexcept { return cell < levels_.size() ? levels_[cell] : 0; }

private:
    static constexpr int levels = 64;

    int level_at(double x, double y) const noexcept;
    HBRUSH brush(int level) noexcept;

    int type_;
    double cosine_;
    double sine_;
    COLORREF from_;
    COLORREF to_;
    RECT box_{};
    HDC pattern_ = nullptr;
    HBITMAP bitmap_ = nullptr;
    HGDIOBJ old_bitmap_ = nullptr;
    std::array<HBRUSH, levels> brushes_{};
    vBUFFER<std::uint8_t> levels_;
    vBUFFER<std::uint8_t> painted_; // what the pattern shows
};

} // namespace klv
