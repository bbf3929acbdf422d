#pragma once

#include <atomic>
#include <cstdint>

namespace klv::gdi {

/// Counts the work of painting, in pixels that a fill would have painted in the same time. Contexts that
/// were made compatible with a metered one share its meter.
class paint_meter {
public:
    [[nodiscard]] std::uint64_t pixels() const { return pixels_.load(std::memory_order_relaxed); }

    /// Painters tell what they paint. cost: of a pixel.
    template <class Spans> static void count(paint_meter* meter, const Spans& spans, unsigned cost)
    {
        if (!meter)
            return;
        std::uint64_t painted = 0;
        for (const auto& s : spans)
            painted += static_cast<std::uint64_t>(s.x1 - s.x0) * cost;
        meter->pixels_.fetch_add(painted, std::memory_order_relaxed);
    }

private:
    std::atomic<std::uint64_t> pixels_ = 0;
};

} // namespace klv::gdi
