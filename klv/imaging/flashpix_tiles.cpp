#include "klv/imaging/flashpix_tiles.h"

#include <algorithm>

namespace klv::imaging::flashpix {

namespace {

/// Both streams of a resolution begin with a header that tells their byte order and class.
constexpr std::uint64_t stream_header_bytes = 28;
/// The tables of number n are property 03nn0001 of the image contents.
constexpr std::uint32_t tables_property = 0x03000001;
/// What a tile in JPEG may take beside twice its pixels. Any number of tiles may say that they are the whole
/// stream.
constexpr std::size_t spare_jpeg_bytes = 1 << 14;

} // namespace

tile_decoder::tile_decoder(const property_set& contents, const compound_stream& data, std::uint32_t width,
    std::uint32_t height, std::uint32_t channels)
    : contents_(contents)
    , data_(data)
    , width_(width)
    , height_(height)
    , channels_(channels)
    , pixels_(std::size_t{width} * height * channels)
{
    session_.err = errors_.manager();
    created_ = errors_.guarded(create, *this);
}

tile_decoder::~tile_decoder() { jpeg_destroy_decompress(&session_); }

void tile_decoder::create(tile_decoder& self) { jpeg_create_decompress(&self.session_); }

std::span<const std::uint8_t> tile_decoder::decode(const tile_descriptor& tile)
{
    switch (tile.compression) {
    case tile_descriptor::uncompressed:
        if (tile.size < pixels_.size()
            || !data_.read(stream_header_bytes + tile.offset, pixels_.size(), stored_))
            return {};
        return stored_;
    case tile_descriptor::one_colour:
        // The subtype is the colour, channel after channel.
        for (std::size_t i = 0; i < pixels_.size(); ++i)
            pixels_[i] = static_cast<std::uint8_t>(tile.subtype >> (8 * (i % channels_)) & 0xFF);
        return pixels_;
    case tile_descriptor::jpeg:
        return decode_jpeg(tile) ? pixels_ : std::span<const std::uint8_t>();
    default:
        return {};
    }
}

bool tile_decoder::decode_jpeg(const tile_descriptor& tile)
{
    const std::size_t size = std::min<std::size_t>(tile.size, 2 * pixels_.size() + spare_jpeg_bytes);
    if (!created_ || !load_tables(tile.subtype >> 24)
        || !data_.read(stream_header_bytes + tile.offset, size, stored_) || stored_.empty())
        return false;
    turns_colours_ = (tile.subtype >> 16 & 0xFF) != 0;
    const bool read = errors_.guarded(read_image, *this);
    jpeg_abort_decompress(&session_);
    return read;
}

bool tile_decoder::load_tables(std::uint32_t number)
{
    if (number == 0 || number == tables_number_)
        return true;
    tables_ = contents_.blob(tables_property | number << 16);
    tables_number_ = number;
    const bool read = !tables_.empty() && errors_.guarded(read_tables, *this);
    jpeg_abort_decompress(&session_);
    return read;
}

void tile_decoder::read_tables(tile_decoder& self)
{
    jpeg_mem_src(&self.session_, self.tables_.data(), self.tables_.size());
    jpeg_read_header(&self.session_, FALSE);
}

void tile_decoder::read_image(tile_decoder& self)
{
    jpeg_decompress_struct& session = self.session_;
    jpeg_mem_src(&session, self.stored_.data(), self.stored_.size());
    jpeg_read_header(&session, TRUE);
    if (session.image_width != self.width_ || session.image_height != self.height_
        || session.num_components != static_cast<int>(self.channels_))
        ERREXIT(&session, JERR_BAD_LENGTH);
    if (self.channels_ == 3) {
        session.jpeg_color_space = self.turns_colours_ ? JCS_YCbCr : JCS_RGB;
        session.out_color_space = JCS_RGB;
    } else if (self.channels_ == 4 && self.turns_colours_) {
        // Colours and opacity are stored as negatives of what the name says, so that inks come out as
        // colours.
        session.jpeg_color_space = JCS_YCCK;
        session.out_color_space = JCS_CMYK;
    } else {
        session.out_color_space = session.jpeg_color_space
            = self.channels_ == 1 ? JCS_GRAYSCALE : JCS_UNKNOWN;
    }
    jpeg_start_decompress(&session);
    const std::size_t row_bytes = std::size_t{self.width_} * self.channels_;
    while (session.output_scanline < session.output_height) {
        JSAMPROW row = self.pixels_.data() + row_bytes * session.output_scanline;
        jpeg_read_scanlines(&session, &row, 1);
    }
}

} // namespace klv::imaging::flashpix
