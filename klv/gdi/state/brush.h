#pragma once

#include "klv/gdi/state/bitmap_object.h"

#include <memory>

namespace klv::gdi {

struct brush_object : gdi_object {
    static constexpr object_kind kind_id = object_kind::brush;
    explicit brush_object(const LOGBRUSH& l)
        : gdi_object(kind_id)
        , log(l)
    {
    }
    INT describe(INT size, void* buffer) const override;

    LOGBRUSH log;
    /// The tile of BS_PATTERN and BS_DIBPATTERN brushes, owned by the brush alone.
    std::shared_ptr<bitmap_object> tile;
    /// The tile's table holds indices into the selected palette (DIB_PAL_COLORS).
    bool palette_indices = false;
};

} // namespace klv::gdi
