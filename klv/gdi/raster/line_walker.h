#pragma once

#include "klv/base/types.h"
#include "klv/gdi/raster/region.h"

#include <cstdint>

namespace klv::gdi {

/// The pixels of a straight line from one point up to, but without, the other: one for each step along the
/// longer axis, on the other axis the nearest to the ideal line (of two equally near the upper or left
/// one), so that a line and its reverse meet the same pixels between their ends.
class line_walker {
public:
    /// Only pixels inside clip are visited; finding the first takes no time. Ends beyond +-2^28 are first
    /// moved onto that square.
    line_walker(POINT from, POINT to, const box& clip);

    [[nodiscard]] bool steep() const { return steep_; }
    /// Steps from the start of the line to the first visited pixel.
    [[nodiscard]] std::int64_t first_step() const { return first_; }
    [[nodiscard]] std::int64_t length() const { return length_; }

    /// Calls visit(x, y) pixel by pixel.
    template <class Visit> void pixels(Visit&& visit);
    /// Calls visit(y, x0, x1) for runs of pixels in one row.
    template <class Visit> void runs(Visit&& visit);

private:
    [[nodiscard]] std::int64_t minor_at(std::int64_t step) const;
    void clip_minor(std::int64_t low, std::int64_t high);
    void advance()
    {
        major_ += direction_;
        error_ += error_step_;
        minor_ += minor_step_;
        if (error_ >= divisor_) {
            error_ -= divisor_;
            ++minor_;
        }
    }

    bool steep_ = false;
    std::int32_t direction_ = 1;
    std::int64_t length_ = 0; ///< pixels of the whole line
    std::int64_t first_ = 0;
    std::int64_t end_ = 0;
    std::int64_t minor_start_ = 0;
    std::int64_t minor_delta_ = 0;

    // The stepped state: minor = floor of (2 minor_delta step - length + 2 length - 1) / (2 length).
    std::int64_t major_ = 0;
    std::int64_t minor_ = 0;
    std::int64_t minor_step_ = 0;
    std::int64_t error_ = 0;
    std::int64_t error_step_ = 0;
    std::int64_t divisor_ = 1;
};

template <class Visit> void line_walker::pixels(Visit&& visit)
{
    for (std::int64_t i = first_; i < end_; ++i) {
        const auto major = static_cast<std::int32_t>(major_);
        const auto minor = static_cast<std::int32_t>(minor_);
        if (steep_)
            visit(minor, major);
        else
            visit(major, minor);
        advance();
    }
}

template <class Visit> void line_walker::runs(Visit&& visit)
{
    if (steep_) {
        pixels([&](std::int32_t x, std::int32_t y) { visit(y, x, x + 1); });
        return;
    }
    for (std::int64_t i = first_; i < end_;) {
        const std::int64_t row = minor_;
        const auto start = static_cast<std::int32_t>(major_);
        while (i < end_ && minor_ == row) {
            advance();
            ++i;
        }
        const auto end = static_cast<std::int32_t>(major_);
        if (direction_ > 0)
            visit(static_cast<std::int32_t>(row), start, end);
        else
            visit(static_cast<std::int32_t>(row), end + 1, start + 1);
    }
}

} // namespace klv::gdi
