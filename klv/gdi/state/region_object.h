#pragma once

#include "klv/gdi/raster/region.h"
#include "klv/gdi/raster/spans.h"
#include "klv/gdi/state/objects.h"

#include <vector>

namespace klv::gdi {

struct region_object : gdi_object {
    static constexpr object_kind kind_id = object_kind::region;
    explicit region_object(region r)
        : gdi_object(kind_id)
        , area(std::move(r))
    {
    }

    region area;
};

/// NULLREGION, SIMPLEREGION or COMPLEXREGION.
[[nodiscard]] INT complexity(const region& r);

/// Gathers spans that come row by row, from left to right, into a region. Equal rows become one band.
class region_builder final : public span_sink {
public:
    void draw(std::span<const span> spans) override;
    [[nodiscard]] region take();

private:
    void close_row();

    std::vector<box> boxes_;
    std::size_t last_band_ = 0; ///< first box of the band that the current row may prolong
    std::size_t row_ = 0; ///< first box of the current row
};

} // namespace klv::gdi
