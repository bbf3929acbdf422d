#pragma once

#include "klv/core/point.h"

#include <cstdint>
#include <span>

namespace klv {

/// The bits of a point's flag byte.
namespace point_flags {
inline constexpr std::uint8_t first = 0x01; ///< first point of a contour
inline constexpr std::uint8_t last = 0x02; ///< last point of a contour
inline constexpr std::uint8_t line_to = 0x08; ///< a straight segment starts or ends here
inline constexpr std::uint8_t curve_to = 0x10; ///< a bezier segment starts here
inline constexpr std::uint8_t control = 0x20; ///< control point, not on the curve
} // namespace point_flags

/// A point of a bezier contour and its flags. Bits without an accessor are kept and compared.
class vBEZPOINT : public vPOINT {
public:
    constexpr vBEZPOINT() noexcept = default;
    constexpr vBEZPOINT(const vPOINT& p, std::uint8_t flags) noexcept
        : vPOINT(p)
        , flags_(flags)
    {
    }

    constexpr bool operator==(const vBEZPOINT& b) const noexcept
    {
        return x == b.x && y == b.y && flags_ == b.flags_;
    }

    /// The getters answer the flag's bit or 0; the setters set it for a nonzero argument, else clear it.
    [[nodiscard]] constexpr int First() const noexcept { return flags_ & point_flags::first; }
    [[nodiscard]] constexpr int Last() const noexcept { return flags_ & point_flags::last; }
    [[nodiscard]] constexpr int LineTo() const noexcept { return flags_ & point_flags::line_to; }
    [[nodiscard]] constexpr int CurveTo() const noexcept { return flags_ & point_flags::curve_to; }
    [[nodiscard]] constexpr int Control() const noexcept { return flags_ & point_flags::control; }
    constexpr void First(int on) noexcept { set(point_flags::first, on); }
    constexpr void Last(int on) noexcept { set(point_flags::last, on); }
    constexpr void LineTo(int on) noexcept { set(point_flags::line_to, on); }
    constexpr void CurveTo(int on) noexcept { set(point_flags::curve_to, on); }
    constexpr void Control(int on) noexcept { set(point_flags::control, on); }

    [[nodiscard]] constexpr std::uint8_t GetFlags() const noexcept { return flags_; }
    constexpr void SetFlags(std::uint8_t flags) noexcept { flags_ = flags; }

private:
    constexpr void set(std::uint8_t flag, int on) noexcept
    {
        flags_ = static_cast<std::uint8_t>(on ? flags_ | flag : flags_ & ~flag);
    }

    std::uint8_t flags_ = 0;
};

/// The point of the cubic at t (0 to 1), truncated toward zero.
[[nodiscard]] vPOINT CalculateParametricPoint(
    double t, const vPOINT& p0, const vPOINT& p1, const vPOINT& p2, const vPOINT& p3) noexcept;

/// The points inside the cubic (its ends excluded) where y, then where x, turns round.
/// \return how many points were written
int CalculateMaximaMinima(const vPOINT& p0, const vPOINT& p1, const vPOINT& p2, const vPOINT& p3,
    std::span<vPOINT, 4> out) noexcept;

} // namespace klv
