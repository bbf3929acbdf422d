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

/// Gives a palette's colours to the free entries of the system palette. \return entries that changed; 0 on
/// a screen without a palette, and for the stock palette.
UINT realise_on_screen(const palette_object& palette);

} // namespace klv::gdi
