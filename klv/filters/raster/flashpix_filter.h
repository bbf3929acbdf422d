#pragma once

#include "klv/filters/multi_resolution_filter.h"

namespace klv {

/// FlashPix images.
class FPXFILTER : public multi_resolution_filter {
public:
    FPXFILTER();
};

} // namespace klv
