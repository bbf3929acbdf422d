#include "klv/gdi/raster/rop3.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace klv::gdi {

namespace {

using numbers = std::span<std::uint32_t>;
using const_numbers = std::span<const std::uint32_t>;

template <class Operation> void with_source(numbers d, const_numbers s, Operation operation)
{
    for (std::size_t i = 0; i < d.size(); ++i)
        d[i] = operation(s[i], d[i]);
}

/// All zeros or all ones for each bit of the table.
std::array<std::uint32_t, 8> spread(std::uint8_t table)
{
    std::array<std::uint32_t, 8> all{};
    for (unsigned i = 0; i < 8; ++i)
        all[i] = (table >> i & 1) != 0 ? 0xFFFFFFFFU : 0U;
    return all;
}

std::uint32_t choose(std::uint32_t by, std::uint32_t one, std::uint32_t zero)
{
    return ((one ^ zero) & by) ^ zero;
}

/// Any operation: the table is looked up bit by bit, all 32 bits of a number at once.
void evaluate(std::uint8_t table, numbers d, const_numbers s, const_numbers p)
{
    const auto t = spread(table);
    for (std::size_t i = 0; i < d.size(); ++i) {
        const std::uint32_t di = d[i];
        const std::uint32_t si = s.empty() ? 0 : s[i];
        const std::uint32_t pi = p.empty() ? 0 : p[i];
        const std::uint32_t p0 = choose(si, choose(di, t[3], t[2]), choose(di, t[1], t[0]));
        const std::uint32_t p1 = choose(si, choose(di, t[7], t[6]), choose(di, t[5], t[4]));
        d[i] = choose(pi, p1, p0);
    }
}

} // namespace

INT rop3::to_rop2() const
{
    const auto bit = [this](unsigned p, unsigned d) { return table_ >> (4 * p + d) & 1; };
    return (bit(0, 0) | bit(0, 1) << 1 | bit(1, 0) << 2 | bit(1, 1) << 3) + 1;
}

void rop3::combine(numbers d, const_numbers s, const_numbers p) const
{
    constexpr std::uint8_t src_copy = 0xCC;
    constexpr std::uint8_t src_and = 0x88;
    constexpr std::uint8_t src_paint = 0xEE;
    constexpr std::uint8_t src_invert = 0x66;
    constexpr std::uint8_t not_src_copy = 0x33;
    switch (table_) {
    case src_copy:
        std::copy(s.begin(), s.end(), d.begin());
        break;
    case src_and:
        with_source(d, s, [](auto a, auto b) { return a & b; });
        break;
    case src_paint:
        with_source(d, s, [](auto a, auto b) { return a | b; });
        break;
    case src_invert:
        with_source(d, s, [](auto a, auto b) { return a ^ b; });
        break;
    case not_src_copy:
        with_source(d, s, [](auto a, auto) { return ~a; });
        break;
    default:
        evaluate(table_, d, s, p);
        break;
    }
}

} // namespace klv::gdi
