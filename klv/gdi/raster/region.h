#pragma once

#include "klv/base/types.h"

#include <span>

#include <pixman.h>

namespace klv::gdi {

/// A rectangle of a region; right and bottom are exclusive. Layout compatible with RECT.
using box = pixman_box32_t;

/// A set of pixels as banded rectangles, sorted by top, then by left.
class region {
public:
    region() { pixman_region32_init(&data_); }
    explicit region(const box& b) { pixman_region32_init_with_extents(&data_, &b); }
    /// Any rectangles, overlapping or not, in any order.
    explicit region(std::span<const box> boxes);
    region(const region& other);
    region(region&& other) noexcept
        : data_(other.data_)
    {
        pixman_region32_init(&other.data_);
    }
    region& operator=(const region& other);
    region& operator=(region&& other) noexcept;
    ~region() { pixman_region32_fini(&data_); }

    [[nodiscard]] bool empty() const { return data_.extents.x1 >= data_.extents.x2; }
    [[nodiscard]] bool is_rectangle() const { return data_.data == nullptr; }
    /// All zero when empty.
    [[nodiscard]] const box& extents() const { return data_.extents; }
    [[nodiscard]] std::span<const box> boxes() const;
    [[nodiscard]] bool contains(std::int32_t x, std::int32_t y) const;
    [[nodiscard]] bool touches(const box& b) const;
    friend bool operator==(const region& a, const region& b);

    void move(std::int32_t dx, std::int32_t dy);
    void unite(const region& a, const region& b);
    void intersect(const region& a, const region& b);
    void subtract(const region& a, const region& b);
    void exclusive_or(const region& a, const region& b);

private:
    // The set operations of pixman take const pointers to mutable structs in its older interfaces.
    mutable pixman_region32_t data_;
};

/// A box with left <= right and top <= bottom, kept to coordinates whose differences fit in 32 bits.
[[nodiscard]] box ordered_box(std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom);
[[nodiscard]] inline bool is_empty(const box& b) { return b.x1 >= b.x2 || b.y1 >= b.y2; }
[[nodiscard]] box intersection(const box& a, const box& b);

} // namespace klv::gdi
