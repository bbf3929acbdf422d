#include "klv/core/real.h"

#include "klv/base/angles.h"

#include <cmath>

namespace klv {

vREAL vREAL::operator/(const vREAL& b) const noexcept
{
    constexpr std::int64_t fraction_full = 65535;
    constexpr std::int32_t largest = 0x7FFFFFFF;

    const bool negative = (raw_ < 0) != (b.raw_ <= 0);
    const std::int64_t dividend = std::abs(std::int64_t{raw_});
    const std::int64_t divisor = std::abs(std::int64_t{b.raw_});
    if (divisor == 0 || dividend / divisor >= fraction_full)
        return vREAL(negative ? -largest : largest);

    // The fraction is developed bit by bit behind a marker bit, which the -1 in base cancels at the end.
    const std::int64_t base = (dividend / divisor - 1) * 65536;
    std::int64_t remainder = dividend % divisor;
    std::int64_t fraction = 1;
    do {
        remainder = 2 * remainder - divisor;
        fraction *= 2;
        if (remainder >= 0)
            ++fraction;
        else
            remainder += divisor;
    } while (fraction < fraction_full);
    if (2 * remainder >= divisor)
        ++fraction;

    const std::int32_t quotient = wrap_narrow(base + fraction);
    return vREAL(negative ? wrap_neg(quotient) : quotient);
}

vREAL vREAL::Sqrt() const noexcept { return vREAL(std::sqrt(std::abs(Double()))); }

vANGLE vREAL::aSin() const noexcept { return vANGLE(to_degrees(std::asin(Double()))); }
vANGLE vREAL::aCos() const noexcept { return vANGLE(to_degrees(std::acos(Double()))); }
vANGLE vREAL::aTan() const noexcept { return vANGLE(to_degrees(std::atan(Double()))); }

double vANGLE::Radians() const noexcept { return to_radians(Double()); }

vREAL vANGLE::Sin() const noexcept { return vREAL(std::sin(Radians())); }
vREAL vANGLE::Cos() const noexcept { return vREAL(std::cos(Radians())); }
vREAL vANGLE::Tan() const noexcept { return vREAL(std::tan(Radians())); }

} // namespace klv
