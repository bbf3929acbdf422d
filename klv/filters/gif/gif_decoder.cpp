#include "klv/filters/gif/gif_decoder.h"

#include "klv/base/buffer.h"
#include "klv/bitmaps/dib.h"
#include "klv/bitmaps/dib_rows.h"
#include "klv/core/progress.h"
#include "klv/filters/gif/gif_format.h"
#include "klv/filters/gif/gif_lzw_decoder.h"
#include "klv/formats/believable_size.h"
#include "klv/streams/stream.h"

#include <algorithm>
#include <new>

namespace klv {

namespace {

/// Resolution of a bitmap file whose pixels are square, pixels per metre.
constexpr std::int32_t usual_resolution = 3300;
/// An aspect byte a stands for pixels (a + 15) / 64 as wide as high.
constexpr std::int32_t aspect_unit = 64;
constexpr std::int32_t aspect_offset = 15;

/// A code of 12 bits stands for fewer than 4096 pixels, and shorter codes for fewer yet. What a file promises
/// beyond that can't be there. A cut-off file may still lack three quarters of its data, and a small image
/// all of it.
constexpr std::uint64_t most_pixels_of_three_bytes = 2 * gif_code_count;
constexpr std::uint64_t allowed_lack = 4;

bool read_bytes(vSTREAM& in, std::span<std::uint8_t> bytes)
{
    return in.ReadPlain(bytes.data(), static_cast<std::uint32_t>(bytes.size())) == bytes.size();
}

std::uint32_t bytes_left(const vSTREAM& in)
{
    const std::uint32_t size = in.Size();
    return size - std::min(size, in.CurrentPos());
}

bool read_colour_table(vSTREAM& in, gif_table_flags flags, gif_picture& picture)
{
    picture.colour_bits = flags.colour_bits();
    std::array<std::uint8_t, 256 * gif_bytes_per_colour> bytes{};
    const std::uint32_t count = picture.colour_count();
    if (!read_bytes(in, std::span(bytes).first(count * gif_bytes_per_colour)))
        return false;
    for (std::size_t i = 0; i < count; ++i)
        picture.table[i] = {bytes[3 * i + 2], bytes[3 * i + 1], bytes[3 * i], 0};
    return true;
}

bool skip_sub_blocks(vSTREAM& in)
{
    std::uint8_t length = 0;
    while (read_bytes(in, {&length, 1})) {
        if (length == 0)
            return true;
        in.MoveFromCur(length);
    }
    return false;
}

/// Reads from an image separator on. done: false when the image has no colours and was passed over.
oFILTER_STATUS read_image_descriptor(vSTREAM& in, bool has_colours, gif_picture& picture, bool& done)
{
    std::array<std::uint8_t, gif_image_descriptor::size> bytes{};
    if (!read_bytes(in, bytes))
        return oFILTER_READ_ERROR;
    byte_reader fields(bytes);
    const auto image = gif_image_descriptor::read(fields);
    done = has_colours || image.flags.has_table();
    if (!done) {
        in.MoveFromCur(1); // the minimum code size
        return skip_sub_blocks(in) ? oFILTER_OK : oFILTER_READ_ERROR;
    }
    if (image.flags.has_table() && !read_colour_table(in, image.flags, picture))
        return oFILTER_READ_ERROR;
    picture.width = image.width;
    picture.height = image.height;
    picture.interlaced = image.interlaced();
    return image.width != 0 && image.height != 0 ? oFILTER_OK : oFILTER_BAD_DATA;
}

/// Passes over extensions and what does not belong to the format, up to the first image that has colours.
oFILTER_STATUS find_image(vSTREAM& in, bool has_colours, gif_picture& picture)
{
    std::uint8_t introducer = 0;
    while (read_bytes(in, {&introducer, 1})) {
        if (introducer == gif_trailer)
            return oFILTER_BAD_DATA;
        if (introducer == gif_extension_introducer) {
            in.MoveFromCur(1); // the label
            if (!skip_sub_blocks(in))
                return oFILTER_READ_ERROR;
        } else if (introducer == gif_image_separator) {
            bool done = false;
            const oFILTER_STATUS status = read_image_descriptor(in, has_colours, picture, done);
            if (status != oFILTER_OK || done)
                return status;
        }
    }
    return oFILTER_READ_ERROR;
}

/// The rows of an image in the order of their coding.
class row_order {
public:
    row_order(std::uint32_t height, bool interlaced)
        : height_(height)
        , passes_(interlaced ? std::span<const pass>(interlaced_passes) : std::span<const pass>(one_pass))
        , row_(passes_.front().first)
    {
    }
    [[nodiscard]] std::uint32_t row() const { return row_; }
    void advance()
    {
        row_ += passes_.front().step;
        while (row_ >= height_ && passes_.size() > 1) {
            passes_ = passes_.subspan(1);
            row_ = passes_.front().first;
        }
    }

private:
    struct pass {
        std::uint32_t first;
        std::uint32_t step;
    };
    static constexpr std::array<pass, 1> one_pass{{{0, 1}}};
    static constexpr std::array<pass, 4> interlaced_passes{{{0, 8}, {4, 8}, {2, 4}, {1, 2}}};

    std::uint32_t height_;
    std::span<const pass> passes_; ///< the one under way and those to come
    std::uint32_t row_;
};

/// Packs rows into the lines of a bitmap.
class bitmap_sink : public gif_row_sink {
public:
    bitmap_sink(const vSTREAM& in, const gif_picture& picture, oDIB& bitmap, oPROGRESS* progress)
        : in_(in)
        , picture_(picture)
        , bitmap_(bitmap)
        , progress_(progress)
        , order_(picture.height, picture.interlaced)
    {
    }
    [[nodiscard]] bool make_room() { return line_.resize(bitmap_.BytesPerLine()); }

    oFILTER_STATUS take_row(std::span<const std::uint8_t> indices) override
    {
        if (indices.size() < picture_.width)
            std::ranges::fill(line_.span(), std::uint8_t{0});
        write_indices(
            indices.data(), line_.data(), picture_.bitmap_bits(), static_cast<std::int32_t>(indices.size()));
        const auto line = static_cast<std::int32_t>(picture_.height - 1U - order_.row());
        order_.advance();
        if (!bitmap_.SetImageLines(line_.data(), picture_.model(), line, 1))
            return oFILTER_NO_MEMORY;
        if (progress_ && progress_->Stop())
            return oFILTER_CANCELLED;
        if (progress_)
            progress_->oSet(in_.CurrentPos());
        return oFILTER_OK;
    }

private:
    const vSTREAM& in_;
    const gif_picture& picture_;
    oDIB& bitmap_;
    oPROGRESS* progress_;
    row_order order_;
    vBUFFER<std::uint8_t> line_;
};

bool in_proportion(const gif_picture& picture, std::uint32_t bytes)
{
    const std::uint64_t pixels = std::uint64_t{picture.width} * picture.height;
    return pixels <= always_believed || pixels <= allowed_lack * most_pixels_of_three_bytes * bytes / 3;
}

bool prepare_bitmap(const gif_picture& picture, oDIB& bitmap)
{
    constexpr std::int32_t metre = oDIBHEADER::pixels_per_metre_of_dpi;
    const auto colours = picture.colours();
    return bitmap.SetHeader(oDIBHEADER(picture.width, picture.height, picture.horizontal_resolution / metre,
               picture.vertical_resolution / metre, picture.model()))
        && bitmap.SetPalette(oDIBPALETTE(colours.data(), picture.colour_count()));
}

} // namespace

oFILTER_STATUS read_gif_picture(vSTREAM& in, gif_picture& picture) noexcept
{
    std::array<std::uint8_t, gif_signature_size> signature{};
    if (!read_bytes(in, signature) || signature[0] != 'G' || signature[1] != 'I' || signature[2] != 'F')
        return oFILTER_BAD_DATA;
    std::array<std::uint8_t, gif_screen_descriptor::size> bytes{};
    if (!read_bytes(in, bytes))
        return oFILTER_READ_ERROR;
    byte_reader fields(bytes);
    const auto screen = gif_screen_descriptor::read(fields);
    picture.horizontal_resolution = usual_resolution;
    picture.vertical_resolution = screen.aspect == 0
        ? usual_resolution
        : usual_resolution * aspect_unit / (screen.aspect + aspect_offset);
    if (screen.flags.has_table() && !read_colour_table(in, screen.flags, picture))
        return oFILTER_READ_ERROR;
    return find_image(in, screen.flags.has_table(), picture);
}

oFILTER_STATUS read_gif_pixels(
    vSTREAM& in, const gif_picture& picture, oDIB& bitmap, oPROGRESS* progress) noexcept
{
    std::uint8_t literal_bits = 0;
    if (!read_bytes(in, {&literal_bits, 1}))
        return oFILTER_READ_ERROR;
    if (literal_bits < gif_lzw_decoder::least_literal_bits
        || literal_bits > gif_lzw_decoder::most_literal_bits || !in_proportion(picture, bytes_left(in)))
        return oFILTER_BAD_DATA;
    if (!prepare_bitmap(picture, bitmap))
        return oFILTER_NO_MEMORY;
    bitmap_sink sink(in, picture, bitmap, progress);
    gif_lzw_decoder decoder;
    if (!sink.make_room() || !decoder.make_room(picture.width, picture.height))
        return oFILTER_NO_MEMORY;
    if (progress) {
        progress->oStart();
        progress->oFullScale(in.Size());
    }
    const oFILTER_STATUS status = decoder.decode(in, literal_bits, sink);
    if (progress)
        progress->oTerminate();
    return status;
}

} // namespace klv
