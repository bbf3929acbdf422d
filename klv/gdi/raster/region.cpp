#include "klv/gdi/raster/region.h"

#include <algorithm>
#include <new>
#include <utility>

namespace klv::gdi {

namespace {

void check(pixman_bool_t done)
{
    if (!done)
        throw std::bad_alloc();
}

} // namespace

region::region(std::span<const box> boxes)
{
    check(pixman_region32_init_rects(&data_, boxes.data(), static_cast<int>(boxes.size())));
}

region::region(const region& other)
{
    pixman_region32_init(&data_);
    check(pixman_region32_copy(&data_, &other.data_));
}

region& region::operator=(const region& other)
{
    check(pixman_region32_copy(&data_, &other.data_));
    return *this;
}

region& region::operator=(region&& other) noexcept
{
    std::swap(data_, other.data_);
    return *this;
}

std::span<const box> region::boxes() const
{
    int count = 0;
    const box* first = pixman_region32_rectangles(&data_, &count);
    return {first, static_cast<std::size_t>(count)};
}

bool region::contains(std::int32_t x, std::int32_t y) const
{
    return pixman_region32_contains_point(&data_, x, y, nullptr) != 0;
}

bool region::touches(const box& b) const
{
    return !gdi::is_empty(b)
        && pixman_region32_contains_rectangle(&data_, const_cast<box*>(&b)) != PIXMAN_REGION_OUT;
}

bool operator==(const region& a, const region& b) { return pixman_region32_equal(&a.data_, &b.data_) != 0; }

void region::move(std::int32_t dx, std::int32_t dy) { pixman_region32_translate(&data_, dx, dy); }

void region::unite(const region& a, const region& b)
{
    check(pixman_region32_union(&data_, &a.data_, &b.data_));
}

void region::intersect(const region& a, const region& b)
{
    check(pixman_region32_intersect(&data_, &a.data_, &b.data_));
}

void region::subtract(const region& a, const region& b)
{
    check(pixman_region32_subtract(&data_, &a.data_, &b.data_));
}

void region::exclusive_or(const region& a, const region& b)
{
    region only_a;
    only_a.subtract(a, b);
    region only_b;
    only_b.subtract(b, a);
    unite(only_a, only_b);
}

box ordered_box(std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom)
{
    static constexpr std::int32_t limit = (1 << 30) - 1;
    const auto fit = [](std::int32_t v) { return std::clamp(v, std::int32_t{-limit}, std::int32_t{limit}); };
    return {fit(std::min(left, right)), fit(std::min(top, bottom)), fit(std::max(left, right)),
        fit(std::max(top, bottom))};
}

box intersection(const box& a, const box& b)
{
    return {std::max(a.x1, b.x1), std::max(a.y1, b.y1), std::min(a.x2, b.x2), std::min(a.y2, b.y2)};
}

} // namespace klv::gdi
