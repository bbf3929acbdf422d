#include "klv/gdi/raster/blitter.h"

#include "klv/gdi/gdi.h"
#include "klv/gdi/raster/pixel_rows.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

namespace klv::gdi {

// ---- Axes ----------------------------------------------------------------------------------------------

bool blit_axis::set(
    std::int32_t to_start, std::int32_t to_extent, std::int32_t from_start, std::int32_t from_extent)
{
    if (to_extent == 0 || from_extent == 0)
        return false;
    mirrored = (to_extent < 0) != (from_extent < 0);
    const auto order = [](std::int32_t start, std::int32_t extent, std::int32_t& low, std::int32_t& size) {
        constexpr std::int64_t limit = 1 << 30;
        const std::int64_t end = std::int64_t{start} + extent;
        const std::int64_t a = std::clamp<std::int64_t>(std::min<std::int64_t>(start, end), -limit, limit);
        const std::int64_t b = std::clamp<std::int64_t>(std::max<std::int64_t>(start, end), -limit, limit);
        low = static_cast<std::int32_t>(a);
        size = static_cast<std::int32_t>(std::min<std::int64_t>(b - a, INT32_MAX));
    };
    order(to_start, to_extent, to, to_size);
    order(from_start, from_extent, from, from_size);
    return to_size > 0 && from_size > 0;
}

std::int64_t blit_axis::nearest(std::int32_t at) const
{
    const std::int64_t offset = std::int64_t{at} - to;
    const std::int64_t step = mirrored ? to_size - 1 - offset : offset;
    return from + (2 * step + 1) * from_size / (2 * std::int64_t{to_size});
}

void blit_axis::range(std::int32_t at, std::int64_t& first, std::int64_t& end) const
{
    const std::int64_t offset = std::int64_t{at} - to;
    const std::int64_t step = mirrored ? to_size - 1 - offset : offset;
    first = from + step * from_size / to_size;
    end = std::max(first + 1, from + (step + 1) * from_size / to_size);
}

void blit_axis::cut(std::int32_t source_size, std::int32_t& low, std::int32_t& high) const
{
    const auto served = [&](std::int32_t at) {
        const std::int64_t source = nearest(at);
        return source >= 0 && source < source_size;
    };
    while (low < high && !served(low))
        ++low;
    while (low < high && !served(high - 1))
        --high;
}

namespace {

using row_buffer = std::vector<std::uint32_t>;

using blit_scratch = decltype(raster_scratch::blit);

/// Sizes a buffer and answers it as a span.
std::span<std::uint32_t> sized(row_buffer& buffer, std::int64_t size)
{
    if (buffer.size() < static_cast<std::size_t>(size))
        buffer.resize(static_cast<std::size_t>(size));
    return {buffer.data(), static_cast<std::size_t>(size)};
}

// ---- Rows of the source in the destination's pixels ----------------------------------------------------

class row_fetcher {
public:
    row_fetcher(blit_scratch& scratch, const blit& job, const box& visible, const pixel_converter& converter)
        : scratch_(scratch)
        , job_(job)
        , source_(*job.source)
        , converter_(converter)
        , visible_(visible)
        , mode_(job.stretch_mode)
        , joins_(mode_ != COLORONCOLOR && (job.x.shrinks() || job.y.shrinks()))
    {
        find_source_columns();
    }

    /// The pixels of row y from the visible box's left edge on.
    std::span<std::uint32_t> fetch(std::int32_t y)
    {
        if (joins_)
            return fetch_joined(y);
        const auto row = sized(scratch_.row, width());
        const auto source_y = static_cast<std::int32_t>(job_.y.nearest(y));
        if (fetched_row_ == source_y)
            return row;
        fetched_row_ = source_y;
        if (direct()) {
            load_pixels(source_, first_column_, source_y, row);
        } else {
            const auto source = sized(scratch_.source, end_column_ - first_column_);
            load_pixels(source_, first_column_, source_y, source);
            const std::int32_t* map = scratch_.map.data();
            for (std::size_t i = 0; i < row.size(); ++i)
                row[i] = source[static_cast<std::size_t>(map[i] - first_column_)];
        }
        converter_.convert(row);
        return row;
    }

private:
    [[nodiscard]] std::int32_t width() const { return visible_.x2 - visible_.x1; }
    [[nodiscard]] bool direct() const { return !job_.x.scaled() && !job_.x.mirrored; }

    void find_source_columns()
    {
        std::int64_t low = INT64_MAX;
        std::int64_t high = INT64_MIN;
        auto& map = scratch_.map;
        map.resize(static_cast<std::size_t>(width()));
        for (std::int32_t x = visible_.x1; x < visible_.x2; ++x) {
            std::int64_t first = job_.x.nearest(x);
            std::int64_t end = first + 1;
            map[static_cast<std::size_t>(x - visible_.x1)] = static_cast<std::int32_t>(first);
            if (joins_)
                job_.x.range(x, first, end);
            low = std::min(low, first);
            high = std::max(high, end);
        }
        first_column_ = static_cast<std::int32_t>(std::clamp<std::int64_t>(low, 0, source_.width));
        end_column_ = static_cast<std::int32_t>(std::clamp<std::int64_t>(high, first_column_, source_.width));
    }

    /// What of [first, end) lies in the source, counted from its first fetched column.
    void column_range(std::int32_t x, std::size_t& first, std::size_t& end) const
    {
        std::int64_t a = 0;
        std::int64_t b = 0;
        job_.x.range(x, a, b);
        first = static_cast<std::size_t>(
            std::clamp<std::int64_t>(a, first_column_, end_column_ - 1) - first_column_);
        end = static_cast<std::size_t>(
            std::clamp<std::int64_t>(b, first_column_ + 1, end_column_) - first_column_);
    }

    std::span<std::uint32_t> fetch_joined(std::int32_t y)
    {
        std::int64_t first = 0;
        std::int64_t end = 0;
        job_.y.range(y, first, end);
        first = std::clamp<std::int64_t>(first, 0, source_.height - 1);
        end = std::clamp<std::int64_t>(end, first + 1, source_.height);
        const auto row = sized(scratch_.row, width());
        if (mode_ == HALFTONE && !source_.monochrome)
            average(first, end, row);
        else
            join(first, end, row);
        if (source_.monochrome)
            converter_.convert(row);
        else
            converter_.convert_colours(row);
        return row;
    }

    /// A source row as colours, or as bits for a monochrome source.
    std::span<std::uint32_t> colours_of_row(std::int64_t y)
    {
        const auto source = sized(scratch_.source, end_column_ - first_column_);
        load_pixels(source_, first_column_, static_cast<std::int32_t>(y), source);
        if (!source_.monochrome)
            for (std::uint32_t& p : source)
                p = colour_of(source_, p);
        return source;
    }

    void join(std::int64_t first, std::int64_t end, std::span<std::uint32_t> row)
    {
        const bool by_and = mode_ == BLACKONWHITE;
        const auto merge = [by_and](std::uint32_t a, std::uint32_t b) { return by_and ? a & b : a | b; };
        const auto sums = sized(scratch_.sums, end_column_ - first_column_);
        std::fill(sums.begin(), sums.end(), by_and ? 0xFFFFFFFFU : 0U);
        for (std::int64_t y = first; y < end; ++y) {
            const auto source = colours_of_row(y);
            for (std::size_t i = 0; i < sums.size(); ++i)
                sums[i] = merge(sums[i], source[i]);
        }
        for (std::int32_t x = visible_.x1; x < visible_.x2; ++x) {
            std::size_t a = 0;
            std::size_t b = 0;
            column_range(x, a, b);
            std::uint32_t value = sums[a];
            for (std::size_t i = a + 1; i < b; ++i)
                value = merge(value, sums[i]);
            row[static_cast<std::size_t>(x - visible_.x1)] = value;
        }
    }

    void average(std::int64_t first, std::int64_t end, std::span<std::uint32_t> row)
    {
        const std::int64_t columns = end_column_ - first_column_;
        const auto sums = sized(scratch_.sums, columns * 3);
        std::fill(sums.begin(), sums.end(), 0U);
        for (std::int64_t y = first; y < end; ++y) {
            const auto source = colours_of_row(y);
            for (std::size_t i = 0; i < source.size(); ++i)
                for (std::size_t c = 0; c < 3; ++c)
                    sums[3 * i + c] += source[i] >> (8 * c) & 0xFF;
        }
        for (std::int32_t x = visible_.x1; x < visible_.x2; ++x) {
            std::size_t a = 0;
            std::size_t b = 0;
            column_range(x, a, b);
            std::uint64_t total[3] = {0, 0, 0};
            for (std::size_t i = a; i < b; ++i)
                for (std::size_t c = 0; c < 3; ++c)
                    total[c] += sums[3 * i + c];
            const std::uint64_t count = (b - a) * static_cast<std::uint64_t>(end - first);
            const auto mean
                = [&](std::size_t c) { return static_cast<std::uint32_t>((total[c] + count / 2) / count); };
            row[static_cast<std::size_t>(x - visible_.x1)] = mean(0) | mean(1) << 8 | mean(2) << 16;
        }
    }

    blit_scratch& scratch_;
    const blit& job_;
    const surface& source_;
    const pixel_converter& converter_;
    box visible_;
    INT mode_;
    bool joins_;
    std::int32_t first_column_ = 0;
    std::int32_t end_column_ = 0;
    std::int32_t fetched_row_ = -1; ///< which the row buffer still holds
};

// ---- Rows into the destination -------------------------------------------------------------------------

/// Combines runs of one fetched row with what is there.
class row_writer final : public span_sink {
public:
    row_writer(const canvas& on, const blit& job, std::int32_t left)
        : on_(on)
        , target_(on.pixels)
        , scratch_(on.scratch.blit)
        , operation_(job.operation)
        , left_(left)
    {
        if (operation_.uses_pattern())
            has_pattern_ = make_brush_tile(on, job.brush, R2_COPYPEN, scratch_.tile);
    }

    void set_row(std::span<const std::uint32_t> row) { row_ = row; }

    void draw(std::span<const span> spans) override
    {
        constexpr unsigned cost = 8;
        paint_meter::count(on_.meter, spans, cost);
        for (const span& s : spans) {
            const auto size = static_cast<std::size_t>(s.x1 - s.x0);
            const auto source = row_.subspan(static_cast<std::size_t>(s.x0 - left_), size);
            if (operation_.is_source_copy()) {
                store_pixels(target_, s.x0, s.y, source);
                continue;
            }
            const auto destination = sized(scratch_.destination, s.x1 - s.x0);
            load_pixels(target_, s.x0, s.y, destination);
            operation_.combine(destination, source, pattern_of(s));
            mask_unused(destination);
            store_pixels(target_, s.x0, s.y, destination);
        }
    }

private:
    std::span<const std::uint32_t> pattern_of(const span& s)
    {
        if (!has_pattern_)
            return {};
        const op_tile& tile = scratch_.tile;
        const auto pattern = sized(scratch_.pattern, s.x1 - s.x0);
        const pixel_op* ops = tile.row(s.y);
        std::int32_t column = tile.column(s.x0);
        for (std::uint32_t& p : pattern) {
            p = ops[column].xor_bits;
            if (++column == tile.width)
                column = 0;
        }
        return pattern;
    }

    void mask_unused(std::span<std::uint32_t> pixels) const
    {
        const std::uint32_t used = used_bits(target_);
        for (std::uint32_t& p : pixels)
            p &= used;
    }

    const canvas& on_;
    const surface& target_;
    blit_scratch& scratch_;
    rop3 operation_;
    std::int32_t left_;
    bool has_pattern_ = false;
    std::span<const std::uint32_t> row_;
};

// ---- Fast ways -----------------------------------------------------------------------------------------

void copy_rows(const surface& to, const blit& job, const region& clip, const box& visible)
{
    const auto bytes = static_cast<std::size_t>(to.bits / 8);
    for (const box& c : clip.boxes()) {
        const box b = intersection(c, visible);
        if (is_empty(b))
            continue;
        const auto source_x = static_cast<std::size_t>(job.x.nearest(b.x1));
        for (std::int32_t y = b.y1; y < b.y2; ++y)
            std::memcpy(to.row(y) + static_cast<std::size_t>(b.x1) * bytes,
                job.source->row(static_cast<std::int32_t>(job.y.nearest(y))) + source_x * bytes,
                static_cast<std::size_t>(b.x2 - b.x1) * bytes);
    }
}

/// The promise that nothing overlaps saves reading the map anew after every pixel.
void gather(std::uint32_t* __restrict out, const std::uint8_t* __restrict in,
    const std::int32_t* __restrict map, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        std::memcpy(out + i, in + std::ptrdiff_t{map[i]} * 4, 4);
}

/// 32-bit pixels under a rectangular clip; rows that show the same one of the source are copied.
void stretch_rows(const surface& to, const blit& job, const box& visible, std::vector<std::int32_t>& map)
{
    map.clear();
    for (std::int32_t x = visible.x1; x < visible.x2; ++x)
        map.push_back(static_cast<std::int32_t>(job.x.nearest(x)));
    std::int64_t last_source = -1;
    const std::uint8_t* last = nullptr;
    for (std::int32_t y = visible.y1; y < visible.y2; ++y) {
        std::uint8_t* const out = to.row(y) + std::ptrdiff_t{visible.x1} * 4;
        const std::int64_t source_y = job.y.nearest(y);
        if (source_y == last_source)
            std::memcpy(out, last, map.size() * 4);
        else
            gather(reinterpret_cast<std::uint32_t*>(out),
                job.source->row(static_cast<std::int32_t>(source_y)), map.data(), map.size());
        last_source = source_y;
        last = out;
    }
}

bool shares_memory(const surface& a, const surface& b)
{
    const auto low = [](const surface& s) { return s.stride < 0 ? s.row(s.height - 1) : s.top; };
    const auto bytes = [](const surface& s) { return std::abs(s.stride) * s.height; };
    return low(a) < low(b) + bytes(b) && low(b) < low(a) + bytes(a);
}

/// A copy of what a job reads, so that drawing can't change it; the job is turned to the copy.
class detached_source {
public:
    explicit detached_source(blit& job)
    {
        const surface& s = *job.source;
        copy_ = memory_.make(s.width, s.height, s.bits, false);
        if (!copy_.top)
            throw std::bad_alloc();
        const auto row_bytes = static_cast<std::size_t>(
            packed_row_bytes(static_cast<std::uint64_t>(s.width), static_cast<unsigned>(s.bits)));
        for (std::int32_t y = 0; y < s.height; ++y)
            std::memcpy(copy_.row(y), s.row(y), row_bytes);
        copy_.masks = s.masks;
        copy_.table = s.table;
        copy_.monochrome = s.monochrome;
        job.source = &copy_;
    }

private:
    surface_memory memory_;
    surface copy_;
};

} // namespace

void run_pattern_blit(const canvas& on, const box& area, const brush_ink& brush, rop3 operation)
{
    // Without a pattern the brush does not matter, not even a null brush.
    brush_painter painter(on, operation.uses_pattern() ? brush : brush_ink::solid(0), operation.to_rop2());
    if (painter.visible())
        clipped_output(on.clip, painter.sink()).fill(area);
}

void run_blit(const canvas& on, const blit& asked)
{
    const surface& to = on.pixels;
    const region& clip = on.clip;
    if (to.top == nullptr || clip.empty() || asked.source->top == nullptr)
        return;
    blit job = asked;
    box visible = intersection(
        {job.x.to, job.y.to, job.x.to + job.x.to_size, job.y.to + job.y.to_size}, clip.extents());
    job.x.cut(job.source->width, visible.x1, visible.x2);
    job.y.cut(job.source->height, visible.y1, visible.y2);
    if (is_empty(visible))
        return;

    std::optional<detached_source> copy;
    if (shares_memory(to, *job.source))
        copy.emplace(job);
    const pixel_converter converter(to, *job.source, job.colours);
    const bool joins = job.stretch_mode != COLORONCOLOR && (job.x.shrinks() || job.y.shrinks());
    if (converter.is_identity() && job.operation.is_source_copy() && !joins) {
        const bool straight = !job.x.scaled() && !job.x.mirrored;
        if (straight && to.bits >= 8) {
            copy_rows(to, job, clip, visible);
            return;
        }
        if (to.bits == 32 && clip.is_rectangle()) {
            stretch_rows(to, job, visible, on.scratch.blit.map);
            return;
        }
    }
    row_fetcher rows(on.scratch.blit, job, visible, converter);
    row_writer writer(on, job, visible.x1);
    clip_stage stage(clip, writer);
    for (std::int32_t y = visible.y1; y < visible.y2; ++y) {
        writer.set_row(rows.fetch(y));
        const span whole{y, visible.x1, visible.x2};
        stage.draw({&whole, 1});
    }
}

} // namespace klv::gdi
