#pragma once

#include "klv/gdi/state/objects.h"

#include <vector>

namespace klv::gdi {

struct palette_object : gdi_object {
    static constexpr object_kind kind_id = object_kind::palette;
    explicit palette_object(std::vector<PALETTEENTRY> e)
        : gdi_object(kind_id)
        , entries(std::move(e))
    {
    }
    INT describe(INT size, void* buffer) const override;

    std::vector<PALETTEENTRY> entries;
};

} // namespace klv::gdi
