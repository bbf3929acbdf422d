#pragma once

#include "klv/base/wrapping.h"
#include "klv/core/object.h"

#include <compare>
#include <cstdint>

namespace klv {

class vANGLE;
class vSTREAM;

/// Signed 16.16 fixed-point number: -32768.0 to 32767.99998 in steps of 1/65536. The 32-bit integer that
/// holds it is its raw value. Arithmetic wraps, except that a quotient too large saturates.
class vREAL : public vOBJECT {
public:
    static constexpr double scale = 65536.0;

    constexpr vREAL() noexcept = default;
    /// The whole number n.
    constexpr vREAL(short n) noexcept
        : raw_(n * 65536)
    {
    }
    /// value, truncated toward zero to a step; outside the range the low 32 bits are kept.
    constexpr vREAL(double value) noexcept
        : raw_(truncate_wrapped(value * scale))
    {
    }

    /// The number whose raw value is raw.
    [[nodiscard]] static constexpr vREAL FromRaw(std::int32_t raw) noexcept { return vREAL(raw); }

    /// Stores a raw value, not a whole number.
    constexpr vREAL& operator=(const int& raw) noexcept
    {
        raw_ = raw;
        return *this;
    }
    constexpr vREAL& operator=(double value) noexcept { return *this = vREAL(value); }

    /// \return the raw value
    [[nodiscard]] constexpr std::int32_t operator()() const noexcept { return raw_; }
    [[nodiscard]] constexpr double Double() const noexcept { return raw_ / scale; }

    [[nodiscard]] constexpr vREAL operator+(const vREAL& b) const noexcept
    {
        return vREAL(wrap_add(raw_, b.raw_));
    }
    [[nodiscard]] constexpr vREAL operator-(const vREAL& b) const noexcept
    {
        return vREAL(wrap_sub(raw_, b.raw_));
    }
    [[nodiscard]] constexpr vREAL operator-() const noexcept { return vREAL(wrap_neg(raw_)); }

    /// The product truncated toward zero, its magnitude wrapping modulo 2^32.
    [[nodiscard]] constexpr vREAL operator*(const vREAL& b) const noexcept
    {
        const auto magnitude
            = static_cast<std::uint32_t>(std::uint64_t{static_cast<std::uint32_t>(wrap_abs(raw_))}
                    * static_cast<std::uint32_t>(wrap_abs(b.raw_))
                >> 16);
        const auto product = static_cast<std::int32_t>(magnitude);
        return vREAL((raw_ < 0) != (b.raw_ < 0) ? wrap_neg(product) : product);
    }
    [[nodiscard]] constexpr vREAL operator*(const int& n) const noexcept { return vREAL(wrap_mul(raw_, n)); }
    /// The quotient, its last bit rounded half up; 2^31 - 1 steps when too large, negative as the signs say.
    /// b must not be 0.
    [[nodiscard]] vREAL operator/(const vREAL& b) const noexcept;
    /// n must not be 0.
    [[nodiscard]] constexpr vREAL operator/(const int& n) const noexcept { return vREAL(Double() / n); }

    constexpr bool operator==(const vREAL& b) const noexcept { return raw_ == b.raw_; }
    constexpr std::strong_ordering operator<=>(const vREAL& b) const noexcept { return raw_ <=> b.raw_; }

    [[nodiscard]] constexpr int Floor() const noexcept { return raw_ >> 16; }
    /// The nearest whole number, halves away from zero.
    [[nodiscard]] constexpr int Round() const noexcept
    {
        const std::int64_t raw = raw_;
        return static_cast<int>(raw >= 0 ? (raw + 0x8000) >> 16 : -((-raw + 0x8000) >> 16));
    }
    /// The least whole number that is not below the value.
    [[nodiscard]] constexpr int Ceil() const noexcept
    {
        return static_cast<int>((std::int64_t{raw_} + 0xFFFF) >> 16);
    }

    /// The square root of the value's magnitude.
    [[nodiscard]] vREAL Sqrt() const noexcept;
    /// Inverse functions, in degrees; 0 outside the function's domain.
    [[nodiscard]] vANGLE aSin() const noexcept;
    [[nodiscard]] vANGLE aCos() const noexcept;
    [[nodiscard]] vANGLE aTan() const noexcept;

    /// Loads and stores the raw value as a 32-bit integer.
    vSTREAM& operator<<(vSTREAM& from) noexcept;
    vSTREAM& operator>>(vSTREAM& to) const noexcept;

private:
    constexpr explicit vREAL(int raw) noexcept
        : raw_(raw)
    {
    }

    std::int32_t raw_ = 0;
};

/// A vREAL that is an angle in degrees.
class vANGLE : public vREAL {
public:
    constexpr vANGLE() noexcept = default;
    /// Whole degrees, reduced to less than one turn either way; the sign of n stays.
    constexpr vANGLE(short n) noexcept
        : vREAL(static_cast<short>(n % 360))
    {
    }
    /// Degrees, not reduced.
    constexpr vANGLE(double degrees) noexcept
        : vREAL(degrees)
    {
    }
    constexpr explicit vANGLE(const vREAL& degrees) noexcept
        : vREAL(degrees)
    {
    }
    using vREAL::operator=;

    [[nodiscard]] double Radians() const noexcept;
    [[nodiscard]] vREAL Sin() const noexcept;
    [[nodiscard]] vREAL Cos() const noexcept;
    [[nodiscard]] vREAL Tan() const noexcept;
};

} // namespace klv
