#pragma once

#include "klv/imaging/compound_file.h"
#include "klv/imaging/jpeg_session.h"
#include "klv/imaging/property_set.h"

#include <cstdint>
#include <span>
#include <vector>

/// Tiles of FlashPix pictures.
namespace klv::imaging::flashpix {

enum colour_space : std::uint32_t { space_grey = 1, space_photo_ycc = 2, space_rgb = 3 };

/// Where a tile lies and how it is stored, as in the header stream.
struct tile_descriptor {
    enum compression : std::uint32_t { uncompressed = 0, one_colour = 1, jpeg = 2 };

    std::uint32_t offset = 0; ///< in the data stream, behind its own header
    std::uint32_t size = 0;
    std::uint32_t compression = uncompressed;
    std::uint32_t subtype
        = 0; ///< of JPEG: whether colours are turned (byte 2), number of the tables (byte 3)
};

/// Decodes the tiles of one resolution.
class tile_decoder {
public:
    tile_decoder(const property_set& contents, const compound_stream& data, std::uint32_t width,
        std::uint32_t height, std::uint32_t channels);
    tile_decoder(const tile_decoder&) = delete;
    tile_decoder& operator=(const tile_decoder&) = delete;
    ~tile_decoder();

    /// \return width * height pixels of so many channels, as stored; empty for a tile that cannot be read
    [[nodiscard]] std::span<const std::uint8_t> decode(const tile_descriptor& tile);

private:
    [[nodiscard]] bool decode_jpeg(const tile_descriptor& tile);
    [[nodiscard]] bool load_tables(std::uint32_t number);
    static void create(tile_decoder& self);
    static void read_tables(tile_decoder& self);
    static void read_image(tile_decoder& self);

    const property_set& contents_;
    const compound_stream& data_;
    std::uint32_t width_;
    std::uint32_t height_;
    std::uint32_t channels_;
    std::vector<std::uint8_t> stored_;
    std::vector<std::uint8_t> pixels_;

    jpeg_errors errors_;
    jpeg_decompress_struct session_{};
    bool created_ = false;
    std::span<const std::uint8_t> tables_;
    std::uint32_t tables_number_ = 0; ///< of the tables that the session has; 0 for none
    bool turns_colours_ = false;
};

} // namespace klv::imaging::flashpix
