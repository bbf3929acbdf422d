#include "klv/imaging/samples.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

namespace klv::imaging {

namespace {

template <class T> T load(const std::uint8_t* at)
{
    T value;
    std::memcpy(&value, at, sizeof value);
    return value;
}

/// A sample of 3 bytes in the byte order of the machine.
struct triple {
    std::uint8_t bytes[3];
};

template <class Stored, class Convert>
void each_sample(std::span<const std::uint8_t> row, std::span<std::uint8_t> samples, Convert convert)
{
    const std::size_t count = std::min(samples.size(), row.size() / sizeof(Stored));
    for (std::size_t i = 0; i < count; ++i)
        samples[i] = convert(load<Stored>(row.data() + i * sizeof(Stored)));
}

/// value of 0 to greatest as 0 to 255, to the nearest.
std::uint8_t scaled(std::uint64_t value, std::uint64_t greatest)
{
    return static_cast<std::uint8_t>((value * 255 + greatest / 2) / greatest);
}

std::uint8_t from_real(double value)
{
    // Not a number compares false and is black.
    return value > 0 ? static_cast<std::uint8_t>(std::lround(std::min(value, 1.0) * 255)) : 0;
}

double half_value(std::uint16_t half)
{
    const int exponent = half >> 10 & 0x1F;
    const int fraction = half & 0x3FF;
    const double magnitude
        = exponent == 0 ? std::ldexp(fraction, -24) : std::ldexp(1024 + fraction, exponent - 25);
    return (half & 0x8000) != 0 ? -magnitude : magnitude;
}

void unpack_reals(std::span<const std::uint8_t> row, unsigned bits, std::span<std::uint8_t> samples)
{
    if (bits == 16)
        each_sample<std::uint16_t>(
            row, samples, [](std::uint16_t half) { return from_real(half_value(half)); });
    else if (bits == 32)
        each_sample<float>(row, samples, [](float value) { return from_real(value); });
    else
        each_sample<double>(row, samples, [](double value) { return from_real(value); });
}

/// Samples of less than 8 bits, or of an odd number above.
void unpack_bits(
    std::span<const std::uint8_t> row, const sample_format& format, std::span<std::uint8_t> samples)
{
    const std::uint32_t greatest = (1U << format.bits) - 1;
    std::uint32_t held = 0;
    unsigned held_bits = 0;
    std::size_t at = 0;
    for (std::uint8_t& sample : samples) {
        while (held_bits < format.bits) {
            if (at == row.size())
                return;
            held = held << 8 | row[at++];
            held_bits += 8;
        }
        held_bits -= format.bits;
        const std::uint32_t value = held >> held_bits & greatest;
        held &= (1U << held_bits) - 1;
        sample = format.indices ? static_cast<std::uint8_t>(value) : scaled(value, greatest);
    }
}

void unpack_naturals(
    std::span<const std::uint8_t> row, const sample_format& format, std::span<std::uint8_t> samples)
{
    constexpr std::uint64_t most16 = 0xFFFF;
    constexpr std::uint64_t most24 = 0xFFFFFF;
    constexpr std::uint64_t most32 = 0xFFFFFFFF;
    switch (format.bits) {
    case 8:
        std::copy_n(row.begin(), std::min(row.size(), samples.size()), samples.begin());
        break;
    case 16:
        each_sample<std::uint16_t>(row, samples, [](std::uint16_t v) { return scaled(v, most16); });
        break;
    case 24:
        each_sample<triple>(row, samples, [](triple v) {
            const bool little = std::endian::native == std::endian::little;
            const std::uint32_t low = v.bytes[little ? 0 : 2];
            const std::uint32_t high = v.bytes[little ? 2 : 0];
            return scaled(low | std::uint32_t{v.bytes[1]} << 8 | high << 16, most24);
        });
        break;
    case 32:
        each_sample<std::uint32_t>(row, samples, [](std::uint32_t v) { return scaled(v, most32); });
        break;
    case 64:
        each_sample<std::uint64_t>(row, samples, [](std::uint64_t v) { return scaled(v >> 32, most32); });
        break;
    default:
        unpack_bits(row, format, samples);
    }
}

} // namespace

bool unpackable(const sample_format& format)
{
    if (format.indices)
        return format.bits >= 1 && format.bits <= 8;
    if (format.kind == sample_format::number::real)
        return format.bits == 16 || format.bits == 32 || format.bits == 64;
    return (format.bits >= 1 && format.bits <= 16) || format.bits == 24 || format.bits == 32
        || format.bits == 64;
}

void unpack_samples(
    std::span<const std::uint8_t> row, const sample_format& format, std::span<std::uint8_t> samples)
{
    if (format.kind == sample_format::number::real)
        unpack_reals(row, format.bits, samples);
    else
        unpack_naturals(row, format, samples);
}

} // namespace klv::imaging
