#pragma once

#include "klv/gdi/raster/region.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace klv::gdi {

/// A run of pixels of one row, x1 exclusive.
struct span {
    std::int32_t y;
    std::int32_t x0;
    std::int32_t x1;
};

/// Takes spans by the batch, so that what happens to them is chosen once per batch and not per pixel.
class span_sink {
public:
    virtual void draw(std::span<const span> spans) = 0;

protected:
    ~span_sink() = default;
};

/// Gathers spans and hands them on; neighbours of one row are joined. Call flush at the end.
class span_batch {
public:
    explicit span_batch(span_sink& next)
        : next_(next)
    {
    }

    void add(std::int32_t y, std::int32_t x0, std::int32_t x1)
    {
        if (used_ != 0 && spans_[used_ - 1].y == y && spans_[used_ - 1].x1 == x0) {
            spans_[used_ - 1].x1 = x1;
            return;
        }
        if (used_ == spans_.size())
            flush();
        spans_[used_++] = {y, x0, x1};
    }
    /// Adds count runs of one row, from left to right; run(i, x0, x1) gives the ends of each, which may be
    /// equal. There are no branches to guess wrong: every run is written, and the next one overwrites it
    /// when it was empty or joins it when they touch.
    template <class Run> void add_row(std::int32_t y, std::size_t count, Run run)
    {
        for (std::size_t i = 0; i < count;) {
            if (used_ == spans_.size())
                flush();
            const std::size_t end = i + std::min(count - i, spans_.size() - used_);
            std::size_t at = used_;
            span last{y, 0, 0};
            for (; i < end; ++i) {
                std::int32_t x0 = 0;
                std::int32_t x1 = 0;
                run(i, x0, x1);
                const bool touches = x0 == last.x1;
                at += (last.x0 != last.x1) & !touches;
                last.x0 = touches ? last.x0 : x0;
                last.x1 = x1;
                spans_[at] = last;
            }
            used_ = at + (last.x0 != last.x1);
        }
    }
    void flush()
    {
        if (used_ != 0)
            next_.draw({spans_.data(), used_});
        used_ = 0;
    }

private:
    span_sink& next_;
    std::size_t used_ = 0;
    std::array<span, 256> spans_;
};

/// Passes on what lies in a region.
class clip_stage final : public span_sink {
public:
    clip_stage(const region& clip, span_sink& next)
        : boxes_(clip.boxes())
        , out_(next)
    {
    }
    void draw(std::span<const span> spans) override;

private:
    void find_band(std::int32_t y);

    std::span<const box> boxes_;
    std::size_t band_ = 0; ///< first box of the band that holds the row last asked for, or of the next below
    std::size_t band_end_ = 0;
    span_batch out_;
};

/// Hands a region's rows to a sink as spans.
void draw_region(const region& area, span_sink& sink);

} // namespace klv::gdi
