#include "klv/imaging/png_common.h"
#include "klv/imaging/resolution.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

namespace klv::imaging {

namespace {

// Drawn pictures are mostly runs and repeated rows, which the lowest level packs nearly as well as the
// highest, without filters and in a fifth of the time.
constexpr int compression_level = 1;
constexpr std::size_t output_buffer = 1 << 16;
constexpr std::size_t most_colours = 256;
// The indices wait in memory until all rows are known; larger images are written as they come.
constexpr std::int64_t most_reduced_pixels = 8 << 20;

/// Rows turned into indices as long as their colours are few: a third of the bytes to pack.
class colour_reducer {
public:
    colour_reducer(std::int32_t width, std::int32_t height)
        : width_(static_cast<std::size_t>(width))
    {
        indices_.reserve(width_ * static_cast<std::size_t>(height));
        slots_.fill({no_colour, 0});
    }

    /// Adds a row of pixels (blue, green, red); false when it holds a colour too many. Nothing is added then.
    bool add(const std::uint8_t* row)
    {
        const std::size_t start = indices_.size();
        indices_.resize(start + width_);
        std::uint8_t* index = indices_.data() + start;
        for (std::size_t x = 0; x < width_;) {
            const std::uint8_t* const pixel = row + 3 * x;
            std::uint8_t found = 0;
            if (!index_of(pixel, found)) {
                indices_.resize(start);
                return false;
            }
            const std::size_t run = run_length(row, x);
            std::memset(index + x, found, run);
            x += run;
        }
        return true;
    }

    [[nodiscard]] std::size_t rows() const { return width_ == 0 ? 0 : indices_.size() / width_; }
    [[nodiscard]] std::uint8_t* indices(std::size_t row) { return indices_.data() + row * width_; }
    [[nodiscard]] std::span<const png_color> colours() const { return {colours_.data(), count_}; }

    /// The pixels of a row that was added.
    void expand(std::size_t row, std::uint8_t* pixels) const
    {
        const std::uint8_t* index = indices_.data() + row * width_;
        for (std::size_t x = 0; x < width_; ++x, pixels += 3) {
            const png_color& colour = colours_[index[x]];
            pixels[0] = colour.blue;
            pixels[1] = colour.green;
            pixels[2] = colour.red;
        }
    }
    void release() { std::vector<std::uint8_t>().swap(indices_); }

private:
    static constexpr std::uint32_t no_colour = 0xFFFFFFFF;
    static constexpr std::size_t slot_count = 1024;
    struct slot {
        std::uint32_t colour;
        std::uint8_t index;
    };

    /// Pixels from x on that are the same: a row compared with itself one pixel further.
    [[nodiscard]] std::size_t run_length(const std::uint8_t* row, std::size_t x) const
    {
        const std::uint8_t* const start = row + 3 * x;
        const std::size_t left = 3 * (width_ - x - 1);
        std::size_t same = 0;
        std::uint64_t a = 0;
        std::uint64_t b = 0;
        while (same + sizeof a <= left) {
            std::memcpy(&a, start + same, sizeof a);
            std::memcpy(&b, start + same + 3, sizeof b);
            if (a != b)
                break;
            same += sizeof a;
        }
        while (same < left && start[same] == start[same + 3])
            ++same;
        return 1 + same / 3;
    }

    bool index_of(const std::uint8_t* pixel, std::uint8_t& index)
    {
        const std::uint32_t colour = pixel[0] | std::uint32_t{pixel[1]} << 8 | std::uint32_t{pixel[2]} << 16;
        constexpr std::uint32_t hash_factor = 2654435761U;
        std::size_t at = (colour * hash_factor) >> 22;
        while (slots_[at].colour != colour) {
            if (slots_[at].colour == no_colour) {
                if (count_ == most_colours)
                    return false;
                slots_[at] = {colour, static_cast<std::uint8_t>(count_)};
                colours_[count_++] = {pixel[2], pixel[1], pixel[0]};
                break;
            }
            at = (at + 1) % slot_count;
        }
        index = slots_[at].index;
        return true;
    }

    std::size_t width_;
    std::vector<std::uint8_t> indices_;
    std::array<slot, slot_count> slots_;
    std::array<png_color, most_colours> colours_{};
    std::size_t count_ = 0;
};

/// Everything one writing needs, outside the frames that libpng's errors jump over.
struct writing {
    writing(image_io& file, const bitmap_handle& handle, line_source& source)
        : out(file)
        , bitmap(handle)
        , lines(source)
        , reduces(
              handle.bits_per_pixel > 8 && std::int64_t{handle.width} * handle.height <= most_reduced_pixels)
        , reducer(handle.width, reduces ? handle.height : 0)
    {
    }

    image_io& out;
    const bitmap_handle& bitmap;
    line_source& lines;
    bool reduces;
    png_session session{png_session::direction::writing};
    colour_reducer reducer;
    std::vector<std::uint8_t> row;
    std::array<png_color, most_colours> palette{};
    int depth = 8;
    int colour_type = PNG_COLOR_TYPE_RGB;
    std::int32_t next_line = 0;
    bool stopped = false;
};

void write_bytes(png_structp png, png_bytep bytes, std::size_t count)
{
    auto& state = *static_cast<writing*>(png_get_io_ptr(png));
    if (!state.out.write({bytes, count}))
        png_error(png, "write error");
}

void flush_nothing(png_structp) { }

void write_header(writing& state)
{
    png_structp png = state.session.png();
    png_infop info = state.session.info();
    const bitmap_handle& bitmap = state.bitmap;
    png_set_write_fn(png, &state, write_bytes, flush_nothing);
    png_set_compression_level(png, compression_level);
    png_set_compression_buffer_size(png, output_buffer);
    png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_NONE);
    png_set_IHDR(png, info, static_cast<png_uint_32>(bitmap.width), static_cast<png_uint_32>(bitmap.height),
        state.depth, state.colour_type, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
        PNG_FILTER_TYPE_DEFAULT);
    if (state.colour_type == PNG_COLOR_TYPE_PALETTE)
        png_set_PLTE(png, info, state.palette.data(), 1 << state.depth);
    if (bitmap.x_resolution > 0 && bitmap.y_resolution > 0)
        png_set_pHYs(png, info, static_cast<png_uint_32>(pixels_per_metre(bitmap.x_resolution)),
            static_cast<png_uint_32>(pixels_per_metre(bitmap.y_resolution)), PNG_RESOLUTION_METER);
    png_write_info(png, info);
    if (state.colour_type == PNG_COLOR_TYPE_RGB)
        png_set_bgr(png);
}

/// A line's pixels or indices as libpng takes them; lines of 32 bits lose their fourth byte on the way.
const std::uint8_t* packed_line(writing& state, const std::uint8_t* line)
{
    if (state.bitmap.bits_per_pixel != 32)
        return line;
    for (std::size_t x = 0; x < static_cast<std::size_t>(state.bitmap.width); ++x)
        std::copy_n(line + 4 * x, 3, state.row.data() + 3 * x);
    return state.row.data();
}

/// The rows from next_line on and the end of the file.
void write_remaining_rows(writing& state)
{
    for (; state.next_line < state.bitmap.height; ++state.next_line) {
        const std::uint8_t* const line = state.lines.line_from_top(state.next_line);
        if (!line) {
            state.stopped = true;
            return;
        }
        png_write_row(state.session.png(), packed_line(state, line));
    }
    png_write_end(state.session.png(), nullptr);
}

void write_reduced_rows(writing& state)
{
    png_set_packing(state.session.png());
    for (std::size_t y = 0; y < state.reducer.rows(); ++y)
        png_write_row(state.session.png(), state.reducer.indices(y));
    png_write_end(state.session.png(), nullptr);
}

void write_expanded_rows(writing& state)
{
    for (std::size_t y = 0; y < state.reducer.rows(); ++y) {
        state.reducer.expand(y, state.row.data());
        png_write_row(state.session.png(), state.row.data());
    }
}

int depth_for(std::size_t colours) { return colours <= 2 ? 1 : colours <= 4 ? 2 : colours <= 16 ? 4 : 8; }

imaging_result result_of(const writing& state, bool done)
{
    return state.stopped ? imaging_aborted : done ? imaging_ok : imaging_write_error;
}

imaging_result save_indexed(writing& state)
{
    state.colour_type = PNG_COLOR_TYPE_PALETTE;
    state.depth = state.bitmap.bits_per_pixel;
    for (std::uint32_t i = 0; i < state.bitmap.colour_count && i < most_colours; ++i)
        state.palette[i] = {state.bitmap.colours[i].rgbRed, state.bitmap.colours[i].rgbGreen,
            state.bitmap.colours[i].rgbBlue};
    const bool done
        = state.session.guarded(write_header, state) && state.session.guarded(write_remaining_rows, state);
    return result_of(state, done);
}

imaging_result save_true_colour(writing& state)
{
    state.row.resize(3 * static_cast<std::size_t>(state.bitmap.width));
    bool few_colours = state.reduces;
    while (few_colours && state.next_line < state.bitmap.height) {
        const std::uint8_t* const line = state.lines.line_from_top(state.next_line);
        if (!line)
            return imaging_aborted;
        few_colours = state.reducer.add(packed_line(state, line));
        state.next_line += few_colours;
    }
    if (few_colours) {
        state.colour_type = PNG_COLOR_TYPE_PALETTE;
        std::ranges::copy(state.reducer.colours(), state.palette.begin());
        state.depth = depth_for(state.reducer.colours().size());
        const bool done
            = state.session.guarded(write_header, state) && state.session.guarded(write_reduced_rows, state);
        return result_of(state, done);
    }
    bool done
        = state.session.guarded(write_header, state) && state.session.guarded(write_expanded_rows, state);
    state.reducer.release();
    done = done && state.session.guarded(write_remaining_rows, state);
    return result_of(state, done);
}

} // namespace

imaging_result png_save(image_io& out, const bitmap_handle& bitmap, line_source& lines, std::int32_t)
{
    writing state(out, bitmap, lines);
    if (!state.session.made())
        return imaging_no_memory;
    if (bitmap.bits_per_pixel <= 8)
        return save_indexed(state);
    return bitmap.bits_per_pixel == 24 || bitmap.bits_per_pixel == 32 ? save_true_colour(state)
                                                                      : imaging_unsupported;
}

} // namespace klv::imaging
