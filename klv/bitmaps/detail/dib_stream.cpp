#include "klv/bitmaps/detail/dib_stream.h"

#include "klv/base/byte_reader.h"
#include "klv/base/wrapping.h"
#include "klv/formats/believable_size.h"
#include "klv/formats/dib_decode.h"
#include "klv/streams/compression/compression_frame.h"
#include "klv/streams/stream.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

namespace klv {

namespace {

constexpr std::uint32_t bytes_per_colour = 4;
/// The size of a colour table is a 16-bit number of bytes.
constexpr std::uint32_t most_colours = 0xFFFF / bytes_per_colour;
constexpr std::uint32_t most_palette_colours = 256;
constexpr std::int32_t greatest_dpi = 32000;
constexpr std::int32_t assumed_dpi = 150;

constexpr std::uint64_t most_bytes_for_one_imploded = 520; // a match of 519 bytes takes at least one

/// Where the bytes of a bitmap come from.
class byte_source {
public:
    virtual ~byte_source() = default;
    /// Reads as many bytes as there are, at most count.
    virtual std::uint32_t read(std::uint8_t* bytes, std::uint32_t count) = 0;
    [[nodiscard]] virtual std::uint64_t left() const = 0;
    /// True when the next block is compressed.
    virtual bool compressed() { return false; }
    /// True when the last block read came out of compression.
    [[nodiscard]] virtual bool was_compressed() const { return false; }
};

class stream_source : public byte_source {
public:
    explicit stream_source(vSTREAM& stream)
        : stream_(stream)
    {
    }
    std::uint32_t read(std::uint8_t* bytes, std::uint32_t count) override
    {
        std::uint32_t got = 0;
        while (got < count) {
            const std::int32_t part = stream_.ReadByteString(bytes + got, count - got);
            if (part <= 0)
                break;
            got += std::min(static_cast<std::uint32_t>(part), count - got);
        }
        return got;
    }
    std::uint64_t left() const override
    {
        const std::uint32_t size = stream_.Size();
        return size - std::min(size, stream_.CurrentPos());
    }
    bool compressed() override
    {
        const std::uint32_t start = stream_.CurrentPos();
        std::array<std::uint8_t, 4> bytes{};
        const bool is_frame = stream_.ReadPlain(bytes.data(), bytes.size()) == bytes.size()
            && compression_frame::begins(bytes);
        stream_.MoveFromStart(start);
        return is_frame;
    }
    bool was_compressed() const override { return stream_.UnCompressed() != 0; }

private:
    vSTREAM& stream_;
};

class memory_source : public byte_source {
public:
    explicit memory_source(const std::uint8_t* bytes)
        : next_(bytes)
    {
    }
    std::uint32_t read(std::uint8_t* bytes, std::uint32_t count) override
    {
        if (count != 0) // an empty colour table has no address
            std::memcpy(bytes, next_, count);
        next_ += count;
        return count;
    }
    std::uint64_t left() const override { return std::numeric_limits<std::uint32_t>::max(); }

private:
    const std::uint8_t* next_;
};

/// What the header of a bitmap announces.
struct stored_layout {
    std::int32_t width = 0;
    std::int32_t height = 0;
    bool top_down = false;
    std::uint16_t bits = 0; ///< 1, 4, 8, 16, 24 or 32
    std::uint32_t compression = BI_RGB;
    std::uint32_t data_size = 0; ///< as announced; of use for run lengths only
    std::uint32_t colours = 0;
    std::int32_t x_dpi = 0;
    std::int32_t y_dpi = 0;

    [[nodiscard]] bool run_lengths() const
    {
        return (compression == BI_RLE8 && bits == 8) || (compression == BI_RLE4 && bits == 4);
    }
    [[nodiscard]] bool masked() const { return bits == 16 || bits == 32; }
    [[nodiscard]] std::uint64_t stored_image_size() const
    {
        return dib_stride(static_cast<std::uint32_t>(width), bits) * static_cast<std::uint32_t>(height);
    }
};

std::int32_t dpi_of(std::int32_t pixels_per_metre)
{
    const std::int32_t dpi = pixels_per_metre / oDIBHEADER::pixels_per_metre_of_dpi;
    return dpi <= 0 || dpi > greatest_dpi ? assumed_dpi : dpi;
}

/// What a header of 40 bytes announces, made plausible: other depths are read as 24 bits.
bool parse_header(std::span<const std::uint8_t> bytes, stored_layout& layout)
{
    byte_reader in(bytes);
    const auto stored = dib_header::read(in);
    if (!stored || stored->size != dib_header::info_size)
        return false;
    layout.width = stored->width;
    layout.height = stored->height == 0 ? 1 : wrap_abs(stored->height);
    layout.top_down = stored->top_down();
    layout.bits = stored->bits;
    layout.compression = stored->compression;
    layout.data_size = stored->image_size;
    layout.x_dpi = dpi_of(stored->x_pixels_per_metre);
    layout.y_dpi = dpi_of(stored->y_pixels_per_metre);
    layout.colours = stored->colours();

    const bool known_depth = layout.bits == 1 || layout.bits == 4 || layout.bits == 8 || layout.masked();
    if (!known_depth) {
        layout.bits = 24;
        layout.colours = stored->colours_used;
    }
    return layout.width > 0 && layout.height > 0;
}

bool read_masks(byte_source& in, const stored_layout& layout, channel_masks& masks)
{
    masks = default_channel_masks(layout.bits);
    if (layout.compression != BI_BITFIELDS || !layout.masked())
        return true;
    std::array<std::uint8_t, channel_masks::stored_size> bytes{};
    if (in.read(bytes.data(), bytes.size()) != bytes.size())
        return false;
    byte_reader fields(bytes);
    masks = channel_masks::read(fields);
    return true;
}

/// Reads the whole table and keeps what the depth can index.
bool read_colours(byte_source& in, const stored_layout& layout, vBUFFER<RGBQUAD>& colours)
{
    if (layout.colours > most_colours)
        return layout.bits > 8; // the number is often left over where there is no table
    vBUFFER<std::uint8_t> bytes;
    const std::uint32_t size = layout.colours * bytes_per_colour;
    if (size > in.left() && !in.compressed())
        return layout.bits > 8;
    if (!bytes.resize(size) || in.read(bytes.data(), size) != size)
        return false;
    if (layout.bits > 8)
        return true;
    const std::uint32_t kept
        = std::min({layout.colours, most_palette_colours, std::uint32_t{1} << layout.bits});
    if (!colours.resize(kept))
        return false;
    byte_reader entries(bytes.span());
    return read_colour_table(entries, bytes_per_colour, colours.span()) == kept;
}

bool in_proportion(byte_source& in, const stored_layout& layout, std::uint64_t image_bytes)
{
    return believable_size(image_bytes, in.left(),
        in.compressed()            ? most_bytes_for_one_imploded
            : layout.run_lengths() ? most_dib_bytes_for_one_run
                                   : most_dib_bytes_for_one_plain);
}

void reverse_rows(std::span<std::uint8_t> pixels, std::size_t stride)
{
    for (std::size_t low = 0, high = pixels.size() / stride; low + 1 < high; ++low) {
        --high;
        std::swap_ranges(pixels.begin() + static_cast<std::ptrdiff_t>(low * stride),
            pixels.begin() + static_cast<std::ptrdiff_t>((low + 1) * stride),
            pixels.begin() + static_cast<std::ptrdiff_t>(high * stride));
    }
}

bool read_raw_pixels(byte_source& in, const stored_layout& layout, read_bitmap& bitmap)
{
    const auto size = static_cast<std::uint32_t>(bitmap.pixels.size());
    bitmap.bytes_read = in.read(bitmap.pixels.data(), size);
    if (layout.bits != 24 || bitmap.bytes_read != size || !in.was_compressed())
        return true;
    vBUFFER<std::uint8_t> coded;
    if (!coded.copy_from(bitmap.pixels))
        return false;
    std::ranges::fill(bitmap.pixels.span(), std::uint8_t{0});
    decode_differences(coded.span(), bitmap.pixels.span());
    return true;
}

bool read_masked_pixels(
    byte_source& in, const stored_layout& layout, const channel_masks& masks, read_bitmap& bitmap)
{
    const std::size_t stride = dib_stride(static_cast<std::uint32_t>(layout.width), layout.bits);
    const std::size_t stride_24 = bitmap.header.BytesPerLine();
    // In one piece, because a compressed block can only be read whole.
    vBUFFER<std::uint8_t> stored;
    if (layout.stored_image_size() > std::numeric_limits<std::uint32_t>::max()
        || !stored.resize_uninitialized(static_cast<std::size_t>(layout.stored_image_size())))
        return false;
    stored.truncate(in.read(stored.data(), static_cast<std::uint32_t>(stored.size())));

    const masked_pixels pixels(masks, layout.bits);
    const std::size_t rows = stored.size() / stride;
    for (std::size_t y = 0; y < rows; ++y)
        pixels.to_24(stored.data() + stride * y, bitmap.pixels.data() + stride_24 * y, layout.width);
    bitmap.bytes_read = static_cast<std::uint32_t>(stride_24 * rows);
    return true;
}

bool read_run_lengths(byte_source& in, const stored_layout& layout, read_bitmap& bitmap)
{
    const std::uint64_t wanted = layout.data_size != 0 ? layout.data_size : in.left();
    vBUFFER<std::uint8_t> data;
    if (!data.resize_uninitialized(static_cast<std::size_t>(std::min(wanted, in.left()))))
        return false;
    data.truncate(in.read(data.data(), static_cast<std::uint32_t>(data.size())));
    decode_run_lengths(data.span(), layout.bits, layout.width, layout.height, bitmap.pixels.data(),
        bitmap.header.BytesPerLine());
    bitmap.bytes_read = bitmap.header.Size();
    return true;
}

bool read_bitmap_from(byte_source& in, read_bitmap& bitmap)
{
    std::array<std::uint8_t, dib_header::info_size> bytes{};
    stored_layout layout;
    if (in.read(bytes.data(), bytes.size()) != bytes.size() || !parse_header(bytes, layout))
        return false;
    bitmap.header
        = oDIBHEADER(layout.width, layout.height, layout.x_dpi, layout.y_dpi, model_of_bits(layout.bits));

    channel_masks masks;
    if (bitmap.header.Size() == 0 || !read_masks(in, layout, masks)
        || !read_colours(in, layout, bitmap.colours))
        return false;
    if (!in_proportion(in, layout, std::max<std::uint64_t>(bitmap.header.Size(), layout.stored_image_size()))
        || !bitmap.pixels.resize(bitmap.header.Size()))
        return false;

    bitmap.bytes_read = 0;
    const bool done = layout.run_lengths() ? read_run_lengths(in, layout, bitmap)
        : layout.masked()                  ? read_masked_pixels(in, layout, masks, bitmap)
                                           : read_raw_pixels(in, layout, bitmap);
    if (layout.top_down)
        reverse_rows(bitmap.pixels.span(), bitmap.header.BytesPerLine());
    return done;
}

/// Passes over a file header ("BM"), or leaves the position where it was.
void skip_file_header(vSTREAM& stream)
{
    const std::uint32_t start = stream.CurrentPos();
    std::array<std::uint8_t, dib_file_header::stored_size> bytes{};
    const std::uint32_t read = stream.ReadPlain(bytes.data(), bytes.size());
    byte_reader in({bytes.data(), read});
    if (!dib_file_header::read(in))
        stream.MoveFromStart(start);
}

/// Switches a stream's compression off for a while.
class uncompressed_writing {
public:
    explicit uncompressed_writing(vSTREAM& stream)
        : stream_(stream)
        , compressed_(stream.Compressed())
    {
        stream_.Compress(0);
    }
    uncompressed_writing(const uncompressed_writing&) = delete;
    uncompressed_writing& operator=(const uncompressed_writing&) = delete;
    ~uncompressed_writing() { stream_.Compress(compressed_); }

private:
    vSTREAM& stream_;
    int compressed_;
};

dib_header stored_header(const oDIBHEADER& header)
{
    const BITMAPINFOHEADER& info = header.info();
    return {.width = info.biWidth,
        .height = info.biHeight,
        .planes = info.biPlanes,
        .bits = info.biBitCount,
        .image_size = info.biSizeImage,
        .x_pixels_per_metre = info.biXPelsPerMeter,
        .y_pixels_per_metre = info.biYPelsPerMeter,
        .colours_used = layout_of(model_of_bits(info.biBitCount)).colours,
        .colours_important = info.biClrImportant};
}

} // namespace

bool read_dib(vSTREAM& stream, read_bitmap& bitmap) noexcept
{
    skip_file_header(stream);
    stream_source in(stream);
    return read_bitmap_from(in, bitmap);
}

bool read_packed_dib(const BITMAPINFO& packed, read_bitmap& bitmap) noexcept
{
    memory_source in(reinterpret_cast<const std::uint8_t*>(&packed));
    const BITMAPINFOHEADER& info = packed.bmiHeader;
    // Without its size, run-length data in memory has no end that could be checked.
    if ((info.biCompression == BI_RLE8 || info.biCompression == BI_RLE4) && info.biSizeImage == 0)
        return false;
    return read_bitmap_from(in, bitmap);
}

void write_dib_header(vSTREAM& stream, const oDIBHEADER& header, std::span<const RGBQUAD> colours) noexcept
{
    {
        // A reader tells a bitmap by the first word of its header.
        const uncompressed_writing plain(stream);
        const auto bytes = stored_header(header).stored();
        stream.WriteBlock(bytes.data(), bytes.size());
    }
    const std::uint32_t expected = layout_of(model_of_bits(header.ColourDepth())).colours;
    if (expected == 0)
        return;
    std::array<std::uint8_t, most_palette_colours * bytes_per_colour> table{};
    for (std::size_t i = 0; i < std::min<std::size_t>(expected, colours.size()); ++i)
        std::ranges::copy(stored_colour(colours[i]), table.begin() + static_cast<std::ptrdiff_t>(4 * i));
    stream.WriteBlock(table.data(), expected * bytes_per_colour);
}

void write_dib_pixels(
    vSTREAM& stream, const oDIBHEADER& header, std::span<const std::uint8_t> pixels) noexcept
{
    const auto size = static_cast<std::uint32_t>(pixels.size());
    if (stream.Compressed() == 0 || header.ColourDepth() != 24) {
        stream.WriteBlock(pixels.data(), size);
        return;
    }
    // Readers undo differences where the block was compressed, and only there.
    vBUFFER<std::uint8_t> coded;
    if (!coded.resize(size)) {
        const uncompressed_writing plain(stream);
        stream.WriteBlock(pixels.data(), size);
        return;
    }
    encode_differences(pixels, coded.span());
    const std::uint32_t start = stream.CurrentPos();
    if (stream.WriteBlock(coded.data(), size) == size) {
        const uncompressed_writing plain(stream);
        stream.MoveFromStart(start);
        stream.WriteBlock(pixels.data(), size);
    }
}

} // namespace klv
