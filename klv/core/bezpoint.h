#pragma once

#include "klv/core/point.h"

#include <cstdint>
#include <span>

namespace klv {

/// A point of a bezier contour and its flags. Bits without an accessor are kept and compared.
class vBEZPOINT : public vPOINT {
public:
    static constexpr std::uint8_t first_flag = 0x01; ///< first point of a contour
    static constexpr std::uint8_t last_flag = 0x02; ///< last point of a contour
    static constexpr std::uint8_t line_to_flag = 0x08; ///< a straight segment starts or ends here
    static constexpr std::uint8_t curve_to_flag = 0x10; ///< a bezier segment starts here
    static constexpr std::uint8_t control_flag = 0x20; ///< control point, not on the curve

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
    [[nodiscard]] constexpr int First() const noexcept { return flags_ & first_flag; }
    [[nodiscard]] constexpr int Last() const noexcept { return flags_ & last_flag; }
    [[nodiscard]] constexpr int LineTo() const noexcept { return flags_ & line_to_flag; }
    [[nodiscard]] constexpr int CurveTo() const noexcept { return flags_ & curve_to_flag; }
    [[nodiscard]] constexpr int Control() const noexcept { return flags_ & control_flag; }
    constexpr void First(int on) noexcept { set(first_flag, on); }
    constexpr void Last(int on) noexcept { set(last_flag, on); }
    constexpr void LineTo(int on) noexcept { set(line_to_flag, on); }
    constexpr void CurveTo(int on) noexcept { set(curve_to_flag, on); }
    constexpr void Control(int on) noexcept { set(control_flag, on); }

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
