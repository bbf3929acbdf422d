#include "images/resample.h"

#include "core/buffer.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace klv {

namespace {

bool fits(const pixel_rows& source, const mutable_pixel_rows& target)
{
    const bool channels
        = source.channels == target.channels || (source.channels == 4 && target.channels == 3);
    return source.first && target.first && source.width > 0 && source.height > 0 && target.width > 0
        && target.height > 0 && channels && source.channels >= 1 && source.channels <= 4;
}

// ---- Whole factors
// -----------------------------------------------------------------------------------------

constexpr std::int32_t greatest_factor = 16; // 16 * 16 * 255 is the last sum that 16 bits hold

/// Adds rows of bytes into 16-bit sums.
void sum_rows(const pixel_rows& source, std::int32_t first, std::int32_t count, std::size_t bytes,
    std::uint16_t* __restrict sums)
{
    const std::uint8_t* row = source.row(first);
    for (std::size_t i = 0; i < bytes; ++i)
        sums[i] = row[i];
    for (std::int32_t y = 1; y < count; ++y) {
        row = source.row(first + y);
        for (std::size_t i = 0; i < bytes; ++i)
            sums[i] = static_cast<std::uint16_t>(sums[i] + row[i]);
    }
}

/// Divides sums of up to 255 * area by an area of at most 256, rounding half up. Exact: the products stay
/// below 2^32, and the error of the reciprocal stays below the distance to the next quotient.
class rounded_mean {
public:
    explicit rounded_mean(std::uint32_t area)
        : half_(area / 2)
        , reciprocal_(((1U << 24) + area - 1) / area)
    {
    }
    [[nodiscard]] std::uint8_t operator()(std::uint32_t sum) const
    {
        return static_cast<std::uint8_t>(((sum + half_) * reciprocal_) >> 24);
    }

private:
    std::uint32_t half_;
    std::uint32_t reciprocal_;
};

/// The same for an area that the compiler knows.
template <std::uint32_t Area> struct fixed_mean {
    std::uint8_t operator()(std::uint16_t sum) const
    {
        return static_cast<std::uint8_t>(static_cast<std::uint16_t>(sum + Area / 2) / Area);
    }
};

/// Adds `factor` neighbours of a row of sums and divides by what they are sums of.
template <int SourceChannels, int TargetChannels, class Mean>
void reduce_row(const std::uint16_t* __restrict sums, std::uint8_t* __restrict target, std::int32_t width,
    std::int32_t factor, Mean mean)
{
    for (std::int32_t x = 0; x < width; ++x) {
        std::array<std::uint16_t, SourceChannels> total{};
        for (std::int32_t step = 0; step < factor; ++step, sums += SourceChannels)
            for (std::size_t c = 0; c < SourceChannels; ++c)
                total[c] = static_cast<std::uint16_t>(total[c] + sums[c]);
        for (std::size_t c = 0; c < TargetChannels; ++c)
            target[c] = mean(total[c]);
        target += TargetChannels;
    }
}

template <int SourceChannels, int TargetChannels>
void reduce_rows(const pixel_rows& source, const mutable_pixel_rows& target, std::int32_t factor_x,
    std::int32_t factor_y, std::span<std::uint16_t> sums)
{
    const rounded_mean mean(static_cast<std::uint32_t>(factor_x * factor_y));
    for (std::int32_t y = 0; y < target.height; ++y) {
        sum_rows(source, y * factor_y, factor_y, sums.size(), sums.data());
        // Supersampling's own factors, with everything known to the compiler.
        if (factor_x == 4 && factor_y == 4)
            reduce_row<SourceChannels, TargetChannels>(
                sums.data(), target.row(y), target.width, 4, fixed_mean<16>{});
        else if (factor_x == 2 && factor_y == 2)
            reduce_row<SourceChannels, TargetChannels>(
                sums.data(), target.row(y), target.width, 2, fixed_mean<4>{});
        else
            reduce_row<SourceChannels, TargetChannels>(
                sums.data(), target.row(y), target.width, factor_x, mean);
    }
}

// ---- Any size
// ----------------------------------------------------------------------------------------------

/// Weights are 16-bit fractions of 65536 and a target pixel's weights sum to exactly that.
constexpr std::uint32_t whole_weight = 65536;

/// The source pixels that make one target pixel along one axis: a first and a last one with weights of their
/// own, and a common weight for those between.
struct axis_span {
    std::int32_t first;
    std::int32_t last;
    std::uint32_t first_weight;
    std::uint32_t inner_weight;
    std::uint32_t last_weight;
};

axis_span covering_span(std::int32_t index, std::int32_t source_size, std::int32_t target_size)
{
    // In units of 1 / target_size of a source pixel the interval is [start, end).
    const std::int64_t start = std::int64_t{index} * source_size;
    const std::int64_t end = start + source_size;
    axis_span span{};
    span.first = static_cast<std::int32_t>(start / target_size);
    span.last = static_cast<std::int32_t>((end - 1) / target_size);
    const auto weight = [&](std::int64_t length) {
        return static_cast<std::uint32_t>(length * whole_weight / source_size);
    };
    if (span.first == span.last) {
        span.first_weight = whole_weight;
        return span;
    }
    span.inner_weight = weight(target_size);
    span.last_weight = weight(end - std::int64_t{span.last} * target_size);
    // The rounding errors of all weights end up in the first.
    span.first_weight = whole_weight - span.last_weight
        - span.inner_weight * static_cast<std::uint32_t>(span.last - span.first - 1);
    return span;
}

axis_span interpolating_span(std::int32_t index, std::int32_t source_size, std::int32_t target_size)
{
    // Position of the target pixel's centre between source pixel centres, in 1 / (2 target_size).
    const std::int64_t unit = std::int64_t{2} * target_size;
    const std::int64_t position = (std::int64_t{2} * index + 1) * source_size - target_size;
    axis_span span{};
    if (position <= 0 || source_size == 1) {
        span.first_weight = whole_weight;
        return span;
    }
    span.first = static_cast<std::int32_t>(position / unit);
    span.last = std::min(span.first + 1, source_size - 1);
    if (span.first == span.last) {
        span.first_weight = whole_weight;
        return span;
    }
    span.last_weight = static_cast<std::uint32_t>(position % unit * whole_weight / unit);
    span.first_weight = whole_weight - span.last_weight;
    return span;
}

bool make_spans(std::int32_t source_size, std::int32_t target_size, vBUFFER<axis_span>& spans)
{
    if (!spans.resize_uninitialized(static_cast<std::size_t>(target_size)))
        return false;
    const auto make = target_size < source_size ? covering_span : interpolating_span;
    for (std::int32_t i = 0; i < target_size; ++i)
        spans[static_cast<std::size_t>(i)] = make(i, source_size, target_size);
    return true;
}

/// The weighted sum of a span of rows, in 16 bits with 8 bits of fraction.
class row_mixer {
public:
    [[nodiscard]] bool prepare(std::size_t bytes)
    {
        return inner_.resize_uninitialized(bytes) && mixed_.resize_uninitialized(bytes);
    }

    const std::uint16_t* mix(const pixel_rows& source, const axis_span& span)
    {
        const std::uint8_t* __restrict first = source.row(span.first);
        const std::uint8_t* __restrict last = source.row(span.last);
        std::uint16_t* __restrict mixed = mixed_.data();
        const std::size_t bytes = mixed_.size();
        if (span.first == span.last) {
            for (std::size_t i = 0; i < bytes; ++i)
                mixed[i] = static_cast<std::uint16_t>(first[i] << 8);
            return mixed;
        }
        if (span.inner_weight == 0 || span.last == span.first + 1) {
            for (std::size_t i = 0; i < bytes; ++i)
                mixed[i] = rounded(first[i] * span.first_weight + last[i] * span.last_weight);
            return mixed;
        }
        sum_inner_rows(source, span);
        const std::uint32_t* __restrict inner = inner_.data();
        for (std::size_t i = 0; i < bytes; ++i)
            mixed[i] = rounded(
                first[i] * span.first_weight + inner[i] * span.inner_weight + last[i] * span.last_weight);
        return mixed;
    }

private:
    static std::uint16_t rounded(std::uint32_t sum) { return static_cast<std::uint16_t>((sum + 128) >> 8); }

    void sum_inner_rows(const pixel_rows& source, const axis_span& span)
    {
        std::uint32_t* __restrict inner = inner_.data();
        const std::size_t bytes = inner_.size();
        const std::uint8_t* __restrict row = source.row(span.first + 1);
        for (std::size_t i = 0; i < bytes; ++i)
            inner[i] = row[i];
        for (std::int32_t y = span.first + 2; y < span.last; ++y) {
            row = source.row(y);
            for (std::size_t i = 0; i < bytes; ++i)
                inner[i] += row[i];
        }
    }

    vBUFFER<std::uint32_t> inner_;
    vBUFFER<std::uint16_t> mixed_;
};

template <int SourceChannels, int TargetChannels>
void mix_columns(const std::uint16_t* row, const vBUFFER<axis_span>& spans, std::uint8_t* target)
{
    constexpr std::uint32_t half = 1U << 23;
    for (const axis_span& span : spans) {
        const std::uint16_t* p = row + static_cast<std::ptrdiff_t>(span.first) * SourceChannels;
        std::array<std::uint32_t, SourceChannels> total;
        for (std::size_t c = 0; c < SourceChannels; ++c)
            total[c] = half + p[c] * span.first_weight;
        for (std::int32_t x = span.first + 1; x < span.last; ++x) {
            p += SourceChannels;
            for (std::size_t c = 0; c < SourceChannels; ++c)
                total[c] += p[c] * span.inner_weight;
        }
        if (span.last != span.first) {
            p += SourceChannels;
            for (std::size_t c = 0; c < SourceChannels; ++c)
                total[c] += p[c] * span.last_weight;
        }
        for (std::size_t c = 0; c < TargetChannels; ++c)
            target[c] = static_cast<std::uint8_t>(total[c] >> 24);
        target += TargetChannels;
    }
}

using mix_routine = void (*)(const std::uint16_t*, const vBUFFER<axis_span>&, std::uint8_t*);

mix_routine mix_routine_for(std::int32_t source_channels, std::int32_t target_channels)
{
    switch (source_channels) {
    case 1:
        return mix_columns<1, 1>;
    case 2:
        return mix_columns<2, 2>;
    case 3:
        return mix_columns<3, 3>;
    default:
        return target_channels == 3 ? mix_columns<4, 3> : mix_columns<4, 4>;
    }
}

} // namespace

bool reduce_box(const pixel_rows& source, const mutable_pixel_rows& target, std::int32_t factor_x,
    std::int32_t factor_y) noexcept
{
    if (!fits(source, target) || factor_x < 1 || factor_x > greatest_factor || factor_y < 1
        || factor_y > greatest_factor || source.width / factor_x != target.width
        || source.width % factor_x != 0 || source.height / factor_y != target.height
        || source.height % factor_y != 0)
        return false;
    const std::size_t bytes
        = static_cast<std::size_t>(source.width) * static_cast<std::size_t>(source.channels);
    vBUFFER<std::uint16_t> sums;
    if (!sums.resize_uninitialized(bytes))
        return false;
    switch (source.channels) {
    case 1:
        reduce_rows<1, 1>(source, target, factor_x, factor_y, sums.span());
        break;
    case 2:
        reduce_rows<2, 2>(source, target, factor_x, factor_y, sums.span());
        break;
    case 3:
        reduce_rows<3, 3>(source, target, factor_x, factor_y, sums.span());
        break;
    default:
        if (target.channels == 3)
            reduce_rows<4, 3>(source, target, factor_x, factor_y, sums.span());
        else
            reduce_rows<4, 4>(source, target, factor_x, factor_y, sums.span());
    }
    return true;
}

bool resample_smooth(const pixel_rows& source, const mutable_pixel_rows& target) noexcept
{
    if (!fits(source, target))
        return false;
    vBUFFER<axis_span> columns;
    vBUFFER<axis_span> rows;
    row_mixer mixer;
    if (!make_spans(source.width, target.width, columns) || !make_spans(source.height, target.height, rows)
        || !mixer.prepare(static_cast<std::size_t>(source.width) * static_cast<std::size_t>(source.channels)))
        return false;
    const mix_routine mix = mix_routine_for(source.channels, target.channels);
    for (std::int32_t y = 0; y < target.height; ++y)
        mix(mixer.mix(source, rows[static_cast<std::size_t>(y)]), columns, target.row(y));
    return true;
}

bool resample_nearest(const pixel_rows& source, const mutable_pixel_rows& target) noexcept
{
    if (!fits(source, target))
        return false;
    vBUFFER<std::int32_t> offsets;
    if (!offsets.resize_uninitialized(static_cast<std::size_t>(target.width)))
        return false;
    const auto source_index = [](std::int32_t i, std::int32_t source_size, std::int32_t target_size) {
        return static_cast<std::int32_t>(
            (std::int64_t{2} * i + 1) * source_size / (std::int64_t{2} * target_size));
    };
    for (std::int32_t x = 0; x < target.width; ++x)
        offsets[static_cast<std::size_t>(x)] = source_index(x, source.width, target.width) * source.channels;
    for (std::int32_t y = 0; y < target.height; ++y) {
        const std::uint8_t* from = source.row(source_index(y, source.height, target.height));
        std::uint8_t* to = target.row(y);
        for (const std::int32_t offset : offsets)
            for (std::int32_t c = 0; c < target.channels; ++c)
                *to++ = from[offset + c];
    }
    return true;
}

} // namespace klv
