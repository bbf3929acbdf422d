#include "klv/filters/tiff/tiff_samples.h"

#include "klv/core/integer_math.h"

#include <algorithm>
#include <cstring>

namespace klv {

namespace {

constexpr std::uint32_t bits_per_byte = 8;
constexpr std::uint32_t channels = 3;

/// Fields of up to 8 bits, the most significant bit first, that may straddle bytes. The caller vouches for
/// the length.
class field_reader {
public:
    explicit field_reader(const std::uint8_t* bytes)
        : next_(bytes)
    {
    }
    std::uint32_t take(std::uint32_t count)
    {
        if (held_ < count) {
            bits_ = (bits_ << bits_per_byte | *next_++) & 0xFFFF;
            held_ += bits_per_byte;
        }
        held_ -= count;
        return bits_ >> held_ & ((1U << count) - 1);
    }
    void skip(std::uint32_t count)
    {
        if (count <= held_) {
            held_ -= count;
            return;
        }
        count -= held_;
        held_ = 0;
        next_ += count / bits_per_byte;
        if (count % bits_per_byte != 0)
            (void)take(count % bits_per_byte);
    }

private:
    const std::uint8_t* next_;
    std::uint32_t bits_ = 0;
    std::uint32_t held_ = 0;
};

/// Packs fields of a width that divides 8, the first in the highest bits.
class field_writer {
public:
    field_writer(std::uint8_t* bytes, std::uint32_t width)
        : next_(bytes)
        , width_(width)
    {
    }
    void put(std::uint32_t value)
    {
        bits_ = bits_ << width_ | value;
        held_ += width_;
        if (held_ == bits_per_byte) {
            *next_++ = static_cast<std::uint8_t>(bits_);
            bits_ = held_ = 0;
        }
    }
    /// Fills up the last byte with zeros.
    void finish()
    {
        if (held_ != 0)
            *next_ = static_cast<std::uint8_t>(bits_ << (bits_per_byte - held_));
    }

private:
    std::uint8_t* next_;
    std::uint32_t width_;
    std::uint32_t bits_ = 0;
    std::uint32_t held_ = 0;
};

using bytes16 [[gnu::vector_size(16)]] = std::uint8_t;

bytes16 load(const std::uint8_t* from)
{
    bytes16 bytes;
    std::memcpy(&bytes, from, sizeof bytes);
    return bytes;
}

constexpr std::uint32_t pixels_at_once = 5;

/// Reverses the three bytes of each of five pixels. Reads two bytes before them and three after, and writes
/// one after.
void swap_five(const std::uint8_t* from, std::uint8_t* to)
{
    constexpr std::uint8_t on = 0xFF;
    constexpr bytes16 first{on, 0, 0, on, 0, 0, on, 0, 0, on, 0, 0, on, 0, 0, on};
    constexpr bytes16 middle{0, on, 0, 0, on, 0, 0, on, 0, 0, on, 0, 0, on, 0, 0};
    constexpr bytes16 last{0, 0, on, 0, 0, on, 0, 0, on, 0, 0, on, 0, 0, on, 0};
    const bytes16 swapped = (load(from + 2) & first) | (load(from) & middle) | (load(from - 2) & last);
    std::memcpy(to, &swapped, sizeof swapped);
}

} // namespace

tiff_row_unpacker::tiff_row_unpacker(const tiff_image& image)
    : width_(image.width)
    , bitmap_depth_(image.bitmap_depth())
    , index_bits_(image.planar_rgb() ? image.bits_of_sample(0) : image.pixel_depth)
    , extra_bits_(image.planar_configuration == tiff_planar ? 0 : image.stored_depth - image.pixel_depth)
    , channel_bits_{image.bits_of_sample(0), image.bits_of_sample(1), image.bits_of_sample(2)}
    , routine_(routine_for(image))
{
    for (std::uint32_t c = 0; c < channels; ++c) {
        const std::int32_t greatest = (1 << channel_bits_[c]) - 1;
        for (std::int32_t value = 0; value <= greatest; ++value)
            scales_[c][static_cast<std::size_t>(value)]
                = static_cast<std::uint8_t>(MulDiv(value, 255, greatest));
    }
}

tiff_row_unpacker::unpack_routine tiff_row_unpacker::routine_for(const tiff_image& image) const
{
    const bool bytes = std::ranges::all_of(channel_bits_, [](auto bits) { return bits == bits_per_byte; });
    if (bitmap_depth_ == 24) {
        if (image.planar_configuration == tiff_planar)
            return &tiff_row_unpacker::scale_planar;
        return bytes && extra_bits_ % bits_per_byte == 0 ? &tiff_row_unpacker::swap_bytes
                                                         : &tiff_row_unpacker::scale_chunky;
    }
    if (image.planar_rgb())
        return &tiff_row_unpacker::join_planes;
    return index_bits_ == bitmap_depth_ && extra_bits_ == 0 ? nullptr : &tiff_row_unpacker::repack_indices;
}

void tiff_row_unpacker::unpack(const tiff_plane_rows& rows, std::span<std::uint8_t> line) const
{
    (this->*routine_)(rows, line.data());
}

void tiff_row_unpacker::clear_rest(std::span<std::uint8_t> line) const
{
    const std::uint64_t bits = std::uint64_t{width_} * bitmap_depth_;
    const auto whole_bytes = static_cast<std::size_t>(bits / bits_per_byte);
    if (const auto bits_in_last = static_cast<unsigned>(bits % bits_per_byte); bits_in_last != 0)
        line[whole_bytes] &= static_cast<std::uint8_t>(0xFF00U >> bits_in_last & 0xFFU);
}

/// Indexes that are not stored as wide as the bitmap has them, or with extra samples between. The channels of
/// an RGB pixel lie side by side, red first, so that they make its index as they stand.
void tiff_row_unpacker::repack_indices(const tiff_plane_rows& rows, std::uint8_t* line) const
{
    field_reader in(rows[0].data());
    field_writer out(line, bitmap_depth_);
    for (std::uint32_t x = 0; x < width_; ++x) {
        out.put(in.take(index_bits_));
        in.skip(extra_bits_);
    }
    out.finish();
}

void tiff_row_unpacker::join_planes(const tiff_plane_rows& rows, std::uint8_t* line) const
{
    field_reader red(rows[0].data()), green(rows[1].data()), blue(rows[2].data());
    field_writer out(line, bitmap_depth_);
    for (std::uint32_t x = 0; x < width_; ++x) {
        const std::uint32_t high = red.take(index_bits_), middle = green.take(index_bits_);
        out.put(((high << index_bits_ | middle) << index_bits_) | blue.take(index_bits_));
    }
    out.finish();
}

void tiff_row_unpacker::swap_bytes(const tiff_plane_rows& rows, std::uint8_t* line) const
{
    const std::uint8_t* from = rows[0].data();
    const std::size_t step = channels + extra_bits_ / bits_per_byte;
    std::uint32_t x = 0;
    const auto swap_one = [&] {
        line[0] = from[2];
        line[1] = from[1];
        line[2] = from[0];
        from += step;
        line += channels;
        ++x;
    };
    if (step == channels) {
        swap_one();
        for (; x + pixels_at_once + 1 < width_; x += pixels_at_once) {
            swap_five(from, line);
            from += channels * pixels_at_once;
            line += channels * pixels_at_once;
        }
    }
    while (x < width_)
        swap_one();
}

void tiff_row_unpacker::scale_chunky(const tiff_plane_rows& rows, std::uint8_t* line) const
{
    field_reader in(rows[0].data());
    for (std::uint32_t x = 0; x < width_; ++x, line += channels) {
        for (std::uint32_t c = 0; c < channels; ++c)
            line[channels - 1 - c] = scales_[c][in.take(channel_bits_[c])];
        in.skip(extra_bits_);
    }
}

void tiff_row_unpacker::scale_planar(const tiff_plane_rows& rows, std::uint8_t* line) const
{
    for (std::uint32_t c = 0; c < channels; ++c) {
        field_reader in(rows[c].data());
        std::uint8_t* to = line + (channels - 1 - c);
        for (std::uint32_t x = 0; x < width_; ++x, to += channels)
            *to = scales_[c][in.take(channel_bits_[c])];
    }
}

tiff_predictor::tiff_predictor(const tiff_image& image, std::uint32_t plane)
    : width_(image.width)
{
    if (image.planar_configuration == tiff_planar)
        sample_bits_ = {image.bits_of_sample(plane)};
    else
        for (std::uint32_t sample = 0; sample < image.samples_per_pixel; ++sample)
            sample_bits_.push_back(image.bits_of_sample(sample));
    left_.resize(sample_bits_.size());
    bytes_ = std::ranges::all_of(sample_bits_, [](auto bits) { return bits == bits_per_byte; });
}

void tiff_predictor::undo(std::span<std::uint8_t> row)
{
    if (!bytes_) {
        undo_fields(row);
        return;
    }
    const std::size_t step = sample_bits_.size();
    for (std::size_t i = step; i < row.size(); ++i)
        row[i] = static_cast<std::uint8_t>((row[i] + row[i - step]) & 0xFF);
}

/// The same for fields of other widths.
void tiff_predictor::undo_fields(std::span<std::uint8_t> row)
{
    std::ranges::fill(left_, 0U);
    std::uint32_t bit = 0; // of the row, the most significant of its first byte being 0
    for (std::uint32_t x = 0; x < width_; ++x)
        for (std::size_t sample = 0; sample < sample_bits_.size(); ++sample) {
            const std::uint32_t bits = sample_bits_[sample];
            std::uint8_t* const at = row.data() + bit / bits_per_byte;
            const bool straddles = bit % bits_per_byte + bits > bits_per_byte;
            const std::uint32_t pair
                = static_cast<std::uint32_t>(at[0]) << bits_per_byte | (straddles ? at[1] : 0U);
            const std::uint32_t shift = 2 * bits_per_byte - bit % bits_per_byte - bits;
            const std::uint32_t mask = (1U << bits) - 1;
            left_[sample] = (left_[sample] + (pair >> shift)) & mask;
            const std::uint32_t joined = (pair & ~(mask << shift)) | left_[sample] << shift;
            at[0] = static_cast<std::uint8_t>(joined >> bits_per_byte);
            if (straddles)
                at[1] = static_cast<std::uint8_t>(joined & 0xFF);
            bit += bits;
        }
}

} // namespace klv
