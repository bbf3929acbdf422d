#include "klv/bitmaps/pixels/resample.h"

#include "klv/base/buffer.h"

#include <algorithm>
#include <array>
#include <cstring>

// Separable filters, one axis after the other: a box (the exact mean of the covered area) along an axis that
// shrinks, a triangle (linear interpolation between pixel centres) along one that grows. Sums are kept in
// whole numbers whose widths are proved beside them, so that the compiler can use whole vectors, and a
// pixel's weights sum to exactly one, so that an even area stays even.
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

/// Adds columns of bytes into 16-bit sums, so many side by side that their sums stay in registers.
template <std::size_t Columns>
void sum_columns(const std::uint8_t* from, std::ptrdiff_t stride, std::int32_t rows, std::uint16_t* sums)
{
    std::array<std::uint16_t, Columns> total{};
    for (std::int32_t y = 0; y < rows; ++y, from += stride)
        for (std::size_t i = 0; i < Columns; ++i)
            total[i] = static_cast<std::uint16_t>(total[i] + from[i]);
    std::copy(total.begin(), total.end(), sums);
}

void sum_rows(const pixel_rows& source, std::int32_t first, std::int32_t count, std::size_t bytes,
    std::uint16_t* __restrict sums)
{
    constexpr std::size_t columns = 64;
    const std::uint8_t* const row = source.row(first);
    std::size_t i = 0;
    for (; i + columns <= bytes; i += columns)
        sum_columns<columns>(row + i, source.stride, count, sums + i);
    for (; i < bytes; ++i)
        sum_columns<1>(row + i, source.stride, count, sums + i);
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

void copy_without_fourth_channel(const std::uint8_t* from, std::uint8_t* to, std::int32_t pixels)
{
    for (std::int32_t x = 0; x < pixels; ++x, from += 4, to += 3)
        std::memcpy(to, from, 3);
}

/// What factors of 1 leave to do.
void copy_pixels(const pixel_rows& source, const mutable_pixel_rows& target)
{
    const auto bytes = static_cast<std::size_t>(source.width) * static_cast<std::size_t>(source.channels);
    for (std::int32_t y = 0; y < target.height; ++y) {
        if (source.channels == target.channels)
            std::memcpy(target.row(y), source.row(y), bytes);
        else
            copy_without_fourth_channel(source.row(y), target.row(y), target.width);
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

/// The channels of one pixel, calculated side by side. Pictures of fewer than four carry along what follows.
using four_floats = float __attribute__((vector_size(16)));
using four_integers = std::int32_t __attribute__((vector_size(16)));
using eight_words = std::uint16_t __attribute__((vector_size(16)));
constexpr std::size_t words_read_at_once = 8;

four_integers four_channels(const std::uint16_t* p)
{
    // Zero words between the words make integers of them.
    eight_words words;
    std::memcpy(&words, p, sizeof words);
    return reinterpret_cast<four_integers>(
        __builtin_shufflevector(words, eight_words{}, 0, 8, 1, 9, 2, 10, 3, 11));
}

four_floats as_floats(four_integers integers) { return __builtin_convertvector(integers, four_floats); }

/// The upper half of a product of 16 bits: processors have one instruction for eight of them.
constexpr std::uint16_t upper_half(std::uint16_t a, std::uint16_t b)
{
    return static_cast<std::uint16_t>((std::uint32_t{a} * b) >> 16);
}

[[gnu::noinline]] void add_weighted(const std::uint8_t* __restrict first, std::uint16_t first_weight,
    const std::uint8_t* __restrict last, std::uint16_t last_weight, std::uint16_t* __restrict mixed,
    std::size_t bytes)
{
    for (std::size_t i = 0; i < bytes; ++i) {
        const auto a = static_cast<std::uint16_t>(first[i] << 8);
        const auto b = static_cast<std::uint16_t>(last[i] << 8);
        mixed[i] = static_cast<std::uint16_t>(upper_half(a, first_weight) + upper_half(b, last_weight));
    }
}

[[gnu::noinline]] void add_weighted(const std::uint16_t* __restrict sums, int shift, std::uint16_t weight,
    std::uint16_t* __restrict mixed, std::size_t bytes)
{
    for (std::size_t i = 0; i < bytes; ++i) {
        const auto sum = static_cast<std::uint16_t>(sums[i] << shift);
        mixed[i] = static_cast<std::uint16_t>(mixed[i] + upper_half(sum, weight));
    }
}

/// Consecutive rows: a first and a last one with weights of their own, and a common weight for those between.
struct weighted_rows {
    const std::uint8_t* first;
    std::ptrdiff_t stride;
    std::uint16_t first_weight;
    std::uint16_t last_weight;
    std::uint16_t inner_weight;
    int inner_shift; ///< of the sum that the inner weight is for
};

/// The same as adding first and last, then the sum of those between, in one pass.
template <std::size_t Inner>
[[gnu::noinline]] void mix_rows(const weighted_rows& rows, std::uint16_t* __restrict mixed, std::size_t bytes)
{
    const auto row = [&](std::size_t i) { return rows.first + static_cast<std::ptrdiff_t>(i) * rows.stride; };
    const std::uint8_t *const first = row(0), *const last = row(Inner + 1);
    const std::uint8_t *const b = row(1), *const c = row(std::min<std::size_t>(2, Inner)),
                              *const d = row(std::min<std::size_t>(3, Inner));
    const weighted_rows w = rows;
    for (std::size_t i = 0; i < bytes; ++i) {
        std::uint16_t sum = b[i];
        if constexpr (Inner > 1)
            sum = static_cast<std::uint16_t>(sum + c[i]);
        if constexpr (Inner > 2)
            sum = static_cast<std::uint16_t>(sum + d[i]);
        mixed[i]
            = static_cast<std::uint16_t>(upper_half(static_cast<std::uint16_t>(first[i] << 8), w.first_weight)
                + upper_half(static_cast<std::uint16_t>(last[i] << 8), w.last_weight)
                + upper_half(static_cast<std::uint16_t>(sum << w.inner_shift), w.inner_weight));
    }
}

constexpr std::int32_t most_rows_at_once = 3;
constexpr std::array mix_at_once{mix_rows<1>, mix_rows<2>, mix_rows<3>};

/// The weighted sum of a span of rows, with 7 bits of fraction. Everything fits 16 bits.
class row_mixer {
public:
    [[nodiscard]] bool prepare(std::size_t bytes)
    {
        mixed_bytes_ = bytes;
        return sums_.resize(bytes) && mixed_.resize(bytes + words_read_at_once);
    }

    const std::uint16_t* mix(const pixel_rows& source, const axis_span& span)
    {
        const std::int32_t inner_rows = span.last - span.first - 1;
        if (inner_rows > most_summed_rows)
            mix_many(source, span);
        else if (inner_rows > 0)
            mix_three(source, span, inner_rows);
        else
            mix_two(source, span);
        return mixed_.data();
    }

private:
    static constexpr std::int32_t most_summed_rows = 257; ///< 255 * 257 is the last sum of 16 bits

    static std::uint16_t half_weight(std::uint32_t weight) { return static_cast<std::uint16_t>(weight / 2); }

    void mix_two(const pixel_rows& source, const axis_span& span)
    {
        add_weighted(source.row(span.first), half_weight(span.first_weight), source.row(span.last),
            half_weight(span.last_weight), mixed_.data(), mixed_bytes_);
    }

    void mix_three(const pixel_rows& source, const axis_span& span, std::int32_t inner_rows)
    {
        // As many bits as the sums leave free in 16, and as many fewer in their weight.
        int shift = 0;
        while (inner_rows << (shift + 1) <= most_summed_rows)
            ++shift;
        const auto inner_weight = static_cast<std::uint16_t>((span.inner_weight << 7) >> shift);
        if (inner_rows <= most_rows_at_once) {
            const weighted_rows rows{source.row(span.first), source.stride, half_weight(span.first_weight),
                half_weight(span.last_weight), inner_weight, shift};
            mix_at_once[inner_rows - 1](rows, mixed_.data(), mixed_bytes_);
            return;
        }
        sum_rows(source, span.first + 1, inner_rows, mixed_bytes_, sums_.data());
        mix_two(source, span);
        add_weighted(sums_.data(), shift, inner_weight, mixed_.data(), mixed_bytes_);
    }

    void mix_many(const pixel_rows& source, const axis_span& span)
    {
        for (std::size_t i = 0; i < mixed_bytes_; ++i) {
            std::uint64_t sum = std::uint64_t{source.row(span.first)[i]} * span.first_weight
                + std::uint64_t{source.row(span.last)[i]} * span.last_weight;
            for (std::int32_t y = span.first + 1; y < span.last; ++y)
                sum += std::uint64_t{source.row(y)[i]} * span.inner_weight;
            mixed_[i] = static_cast<std::uint16_t>(sum >> 9);
        }
    }

    std::size_t mixed_bytes_ = 0;
    vBUFFER<std::uint16_t> sums_;
    vBUFFER<std::uint16_t> mixed_;
};

/// A span of columns, its weights as factors from 7 bits of fraction to bytes.
struct column_span {
    std::int32_t first;
    std::int32_t last;
    float first_factor;
    float inner_factor;
    float last_factor;
};

bool make_columns(std::int32_t source_size, std::int32_t target_size, vBUFFER<column_span>& columns)
{
    vBUFFER<axis_span> spans;
    if (!make_spans(source_size, target_size, spans) || !columns.resize_uninitialized(spans.size()))
        return false;
    constexpr float scale = 1.0F / (128.0F * whole_weight);
    const auto factor = [](std::uint32_t weight) { return static_cast<float>(weight) * scale; };
    for (std::size_t i = 0; i < spans.size(); ++i)
        columns[i] = {spans[i].first, spans[i].last, factor(spans[i].first_weight),
            factor(spans[i].inner_weight), factor(spans[i].last_weight)};
    return true;
}

/// Leaves the target's channels, half a unit added for rounding, in totals: room for one pixel more.
template <int SourceChannels, int TargetChannels>
void mix_columns(const std::uint16_t* row, const vBUFFER<column_span>& spans, float* totals)
{
    for (const column_span& span : spans) {
        const std::uint16_t* p = row + static_cast<std::ptrdiff_t>(span.first) * SourceChannels;
        four_floats total = as_floats(four_channels(p)) * span.first_factor + 0.5F;
        if (span.last != span.first) {
            four_integers inner{};
            for (std::int32_t x = span.first + 1; x < span.last; ++x)
                inner += four_channels(p += SourceChannels);
            p += SourceChannels;
            total += as_floats(inner) * span.inner_factor + as_floats(four_channels(p)) * span.last_factor;
        }
        // The next pixel overwrites what is not this one's.
        std::memcpy(totals, &total, sizeof total);
        totals += TargetChannels;
    }
}

void store_bytes(const float* __restrict totals, std::uint8_t* __restrict target, std::size_t bytes)
{
    for (std::size_t i = 0; i < bytes; ++i)
        target[i] = static_cast<std::uint8_t>(static_cast<std::int32_t>(totals[i]));
}

using mix_routine = void (*)(const std::uint16_t*, const vBUFFER<column_span>&, float*);

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
    if (factor_x == 1 && factor_y == 1) {
        copy_pixels(source, target);
        return true;
    }
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
    if (source.width % target.width == 0 && source.height % target.height == 0
        && reduce_box(source, target, source.width / target.width, source.height / target.height))
        return true;
    const std::size_t target_bytes
        = static_cast<std::size_t>(target.width) * static_cast<std::size_t>(target.channels);
    constexpr std::size_t one_pixel_more = 4;
    vBUFFER<column_span> columns;
    vBUFFER<axis_span> rows;
    vBUFFER<float> totals;
    row_mixer mixer;
    if (!make_columns(source.width, target.width, columns) || !make_spans(source.height, target.height, rows)
        || !totals.resize(target_bytes + one_pixel_more)
        || !mixer.prepare(static_cast<std::size_t>(source.width) * static_cast<std::size_t>(source.channels)))
        return false;
    const mix_routine mix = mix_routine_for(source.channels, target.channels);
    for (std::int32_t y = 0; y < target.height; ++y) {
        mix(mixer.mix(source, rows[static_cast<std::size_t>(y)]), columns, totals.data());
        store_bytes(totals.data(), target.row(y), target_bytes);
    }
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
