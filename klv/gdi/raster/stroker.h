#pragma once

#include "klv/gdi/raster/brush_painter.h"
#include "klv/gdi/raster/curves.h"
#include "klv/gdi/raster/line_walker.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace klv::gdi {

/// No pen is wider, in device pixels.
inline constexpr std::int32_t widest_pen = 1 << 20;

/// A pen with its colours looked up.
struct pen_ink {
    UINT style = 0; ///< PS_SOLID to PS_INSIDEFRAME
    std::int32_t width = 0; ///< device pixels; 0 is as thin as can be
    rgb colour = 0;
    std::optional<rgb> gaps; ///< between dashes; none leaves what is there
    INT rop2 = 0;
};

/// Draws lines with a pen. Pens of one device pixel step along the line; wider ones become
/// polygons with round joins and ends, filled together when finish is called so that a mix mode meets each
/// pixel once.
class stroker {
public:
    stroker(const canvas& on, const pen_ink& pen);

    [[nodiscard]] bool visible() const { return solid_.has_value(); }
    /// Device pixels; at least 1.
    [[nodiscard]] std::int32_t width() const { return width_; }
    [[nodiscard]] bool wide() const { return width_ > 1; }
    [[nodiscard]] bool dashed() const { return dashes_ != nullptr; }

    /// Device points, which name pixels; the last pixel of an open thin line is left out.
    void lines(std::span<const POINT> points, bool closed);
    /// The same in sixteenths, where a pixel's centre is at 8, 8.
    void lines(std::span<const fixed_point> points, bool closed);
    /// A box with elliptic corners (see outline_rounded_box); for thin pens without dashes.
    void rounded_box(const box& area, std::int32_t corner_width, std::int32_t corner_height);
    void finish();

private:
    struct dash_pattern {
        std::array<std::uint8_t, 6> lengths; ///< on, off, on, ... pixels
        std::size_t count;
    };
    static const dash_pattern* dashes_of(UINT style);

    void thin_line(POINT from, POINT to);
    void dashed_line(POINT from, POINT to);
    void wide_lines(std::span<const fixed_point> points, bool closed);
    void add_disc(fixed_point centre);
    void add_join(fixed_point at, fixed_point in, fixed_point out);
    void add_bar(fixed_point from, fixed_point to, fixed_point side);
    [[nodiscard]] fixed_point side_of(fixed_point from, fixed_point to) const;
    void make_disc();
    [[nodiscard]] bool dash_at(std::int64_t distance) const;

    raster_scratch& scratch_;
    std::int32_t width_ = 1;
    const dash_pattern* dashes_ = nullptr;
    std::int64_t dash_start_ = 0; ///< distance along the line so far
    std::optional<solid_painter> solid_;
    std::optional<solid_painter> gaps_; ///< between dashes, when the background is opaque
    std::optional<clipped_output> output_;
    std::optional<clipped_output> gap_output_;
    std::optional<span_batch> spans_;
    std::optional<span_batch> gap_spans_;
};

} // namespace klv::gdi
