#pragma once

#include "klv/core/object.h"
#include "klv/core/real.h"

namespace klv {

/// Two reals in the order given. Arithmetic goes component by component.
class vRANGE : public vOBJECT {
public:
    constexpr vRANGE() noexcept = default;
    constexpr vRANGE(const vREAL& first, const vREAL& second) noexcept
        : first_(first)
        , second_(second)
    {
    }
    /// Two raw values.
    constexpr vRANGE(const int& first, const int& second) noexcept
        : first_(vREAL::FromRaw(first))
        , second_(vREAL::FromRaw(second))
    {
    }

    [[nodiscard]] constexpr const vREAL& First() const noexcept { return first_; }
    [[nodiscard]] constexpr const vREAL& Second() const noexcept { return second_; }

    [[nodiscard]] constexpr vRANGE operator+(const vRANGE& b) const noexcept
    {
        return {first_ + b.first_, second_ + b.second_};
    }
    [[nodiscard]] constexpr vRANGE operator-(const vRANGE& b) const noexcept
    {
        return {first_ - b.first_, second_ - b.second_};
    }
    [[nodiscard]] constexpr vRANGE operator*(const vREAL& r) const noexcept
    {
        return {first_ * r, second_ * r};
    }
    /// r must not be 0.
    [[nodiscard]] vRANGE operator/(const vREAL& r) const noexcept { return {first_ / r, second_ / r}; }

    constexpr bool operator==(const vRANGE& b) const noexcept
    {
        return first_ == b.first_ && second_ == b.second_;
    }
    /// The order holds only when it holds for both components.
    constexpr bool operator>=(const vRANGE& b) const noexcept
    {
        return first_ >= b.first_ && second_ >= b.second_;
    }
    constexpr bool operator<=(const vRANGE& b) const noexcept
    {
        return first_ <= b.first_ && second_ <= b.second_;
    }
    constexpr bool operator>(const vRANGE& b) const noexcept
    {
        return first_ > b.first_ && second_ > b.second_;
    }
    constexpr bool operator<(const vRANGE& b) const noexcept
    {
        return first_ < b.first_ && second_ < b.second_;
    }

private:
    vREAL first_;
    vREAL second_;
};

} // namespace klv
