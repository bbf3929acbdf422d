#pragma once

#include "klv/gdi/state/objects.h"

namespace klv::gdi {

struct pen_object : gdi_object {
    static constexpr object_kind kind_id = object_kind::pen;
    explicit pen_object(const LOGPEN& l)
        : gdi_object(kind_id)
        , log(l)
    {
    }
    INT describe(INT size, void* buffer) const override;

    LOGPEN log;
};

} // namespace klv::gdi
