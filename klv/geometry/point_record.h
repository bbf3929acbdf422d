#pragma once

#include "klv/base/byte_order.h"
#include "klv/core/bezpoint.h"
#include "klv/core/point.h"

#include <array>
#include <cstdint>

namespace klv {

/// Whole flag bytes as shapes have them.
namespace point_flags {
inline constexpr std::uint8_t segment = line_to | curve_to;

inline constexpr std::uint8_t start_line = first | line_to; // 9
inline constexpr std::uint8_t start_curve = first | curve_to; // 17
inline constexpr std::uint8_t open_end = last; // 2
inline constexpr std::uint8_t closing_line = last | line_to; // 10
inline constexpr std::uint8_t closing_curve = last | curve_to; // 18
} // namespace point_flags

/// A point as shapes keep it in memory and on streams: x and y as little-endian 32-bit integers, then the
/// flag byte, without padding or alignment, so that a shape can use the bytes of a stream in place.
class point_record {
public:
    static constexpr std::size_t size = 9;

    point_record() = default;
    point_record(std::int32_t x, std::int32_t y, std::uint8_t flags) { set(x, y, flags); }
    point_record(const vPOINT& p, std::uint8_t flags)
        : point_record(p.x, p.y, flags)
    {
    }
    explicit point_record(const vBEZPOINT& p)
        : point_record(p.x, p.y, p.GetFlags())
    {
    }

    [[nodiscard]] std::int32_t x() const { return load(0); }
    [[nodiscard]] std::int32_t y() const { return load(4); }
    [[nodiscard]] std::uint8_t flags() const { return bytes_[8]; }
    [[nodiscard]] vPOINT point() const { return vPOINT(x(), y()); }
    [[nodiscard]] vBEZPOINT bez_point() const { return vBEZPOINT(point(), flags()); }
    [[nodiscard]] bool has(std::uint8_t bits) const { return (flags() & bits) != 0; }

    void set(std::int32_t x, std::int32_t y, std::uint8_t flags)
    {
        set_point(x, y);
        bytes_[8] = flags;
    }
    void set_point(std::int32_t x, std::int32_t y)
    {
        store(0, x);
        store(4, y);
    }
    void set_point(const vPOINT& p) { set_point(p.x, p.y); }
    void set_flags(std::uint8_t flags) { bytes_[8] = flags; }

private:
    // Compilers make one load or store of these.
    [[nodiscard]] std::int32_t load(std::size_t at) const
    {
        return static_cast<std::int32_t>(load_le<4>(&bytes_[at]));
    }
    void store(std::size_t at, std::int32_t value)
    {
        store_le<4>(&bytes_[at], static_cast<std::uint32_t>(value));
    }

    std::array<std::uint8_t, size> bytes_{};
};

static_assert(sizeof(point_record) == point_record::size && alignof(point_record) == 1);

} // namespace klv
