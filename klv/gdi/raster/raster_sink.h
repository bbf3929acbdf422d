#pragma once

#include "klv/gdi/raster/canvas.h"
#include "klv/gdi/sink/sink.h"

#include <cstdint>

namespace klv::gdi {

/// Draws on pixels: those of the selected bitmap, or the screen's.
class raster_sink final : public sink {
public:
    enum class place : std::uint8_t { screen, memory };

    explicit raster_sink(place where)
        : place_(where)
    {
    }

    [[nodiscard]] UINT type() const override;
    [[nodiscard]] INT capability(const drawing_state& state, INT index) override;
    [[nodiscard]] const region& visible(const drawing_state& state) override;
    [[nodiscard]] const surface* pixels(const drawing_state& state) override;
    [[nodiscard]] surface format(const drawing_state& state) override;
    [[nodiscard]] rgb nearest(const drawing_state& state, rgb colour) override;
    [[nodiscard]] COLORREF get_pixel(const drawing_state& state, POINT at) override;

    void select(const drawing_state& state, const gdi_object& object) override;
    void change_clip(const drawing_state& state, const clip_change& what) override;
    void restore(const drawing_state& state, INT as_called) override;
    UINT realise_palette(const drawing_state& state) override;

    void draw(const drawing_state& state, const figure& what) override;
    void fill(const drawing_state& state, const region_fill& what) override;
    void fill(const drawing_state& state, const region_frame& what) override;
    void fill(const drawing_state& state, const box_fill& what) override;
    void fill(const drawing_state& state, const pattern_block& what) override;
    void write(const drawing_state& state, const text_call& what) override;
    bool copy(const drawing_state& state, const context_block& what) override;
    bool copy(const drawing_state& state, const dib_block& what) override;
    bool copy(const drawing_state& state, const dib_band& what) override;
    COLORREF set_pixel(const drawing_state& state, POINT at, COLORREF colour) override;
    bool flood(const drawing_state& state, POINT from, COLORREF colour, UINT type) override;

private:
    [[nodiscard]] const surface& target(const drawing_state& state);
    [[nodiscard]] canvas open(const drawing_state& state);

    place place_;
    region visible_;
    bool visible_valid_ = false;
    SIZE visible_size_{0, 0}; ///< of the surface that visible_ was made for
    /// Stands in for the stock bitmap, which all contexts share: it is drawn on by none.
    std::uint8_t own_bytes_[4] = {};
    surface own_pixel_;
};

} // namespace klv::gdi
