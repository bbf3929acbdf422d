#include "klv/base/integer_root.h"

#include <cmath>

namespace klv {

std::int32_t integer_root(std::int64_t square) noexcept
{
    // The square root of a double is off by less than one for any 64-bit value.
    auto root = static_cast<std::int64_t>(std::sqrt(static_cast<double>(square)));
    if (root * root > square)
        --root;
    else if ((root + 1) * (root + 1) <= square)
        ++root;
    if (square - root * root > root)
        ++root;
    return static_cast<std::int32_t>(root);
}

} // namespace klv
