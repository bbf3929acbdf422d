#pragma once

#include "klv/filters/multi_resolution_filter.h"

namespace klv {

/// Photo CD image packs.
class PCDFILTER : public multi_resolution_filter {
public:
    PCDFILTER();
};

} // namespace klv
