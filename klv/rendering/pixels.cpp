#include "klv/rendering/pixels.h"

#include "klv/rendering/detail/limits.h"

#include <utility>

namespace klv {

bool rendered_image::resize(int width, int height, pixel_order order) noexcept
{
    if (!is_side(width) || !is_side(height))
        return false;
    rendered_image made;
    made.width_ = width;
    made.height_ = height;
    made.order_ = order;
    if (!made.bytes_.resize(made.stride() * static_cast<std::size_t>(height)))
        return false;
    *this = std::move(made);
    return true;
}

} // namespace klv
