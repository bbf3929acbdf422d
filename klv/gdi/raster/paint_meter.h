#pragma once

#include <cstdint>

namespace klv::gdi {

/// Counts the work of painting on all surfaces while it lives, in pixels that a fill would have painted in
/// the same time. One lives at a time.
class paint_meter {
public:
    paint_meter();
    ~paint_meter();
    paint_meter(const paint_meter&) = delete;
    paint_meter& operator=(const paint_meter&) = delete;

    [[nodiscard]] std::uint64_t pixels() const { return pixels_; }

    /// Painters tell what they paint. cost: of a pixel.
    template <class Spans> static void count(const Spans& spans, unsigned cost)
    {
        if (!active_)
            return;
        for (const auto& s : spans)
            active_->pixels_ += static_cast<std::uint64_t>(s.x1 - s.x0) * cost;
    }

private:
    static paint_meter* active_;
    std::uint64_t pixels_ = 0;
};

} // namespace klv::gdi
