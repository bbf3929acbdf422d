#include "klv/imaging/tiff_rows.h"

#include <algorithm>

namespace klv::imaging {

tiff_rows::tiff_rows(image_io& stream, tiff_file& file, std::size_t planes)
    : tiled_(TIFFIsTiled(file.handle()) != 0)
    , image_width_(file.tag<std::uint32_t>(TIFFTAG_IMAGEWIDTH, 0))
{
    files_.push_back(file.handle());
    for (std::size_t plane = 1; plane < planes && !tiled_; ++plane) {
        more_files_.push_back(std::make_unique<tiff_file>(stream, tiff_file::access::reading));
        readable_ = readable_ && more_files_.back()->is_open();
        files_.push_back(more_files_.back()->handle());
    }
    rows_.resize(planes);
    for (auto& row : rows_)
        row.resize(static_cast<std::size_t>(std::max<tmsize_t>(TIFFScanlineSize(file.handle()), 0)));
    readable_ = readable_ && !rows_[0].empty();
    if (tiled_ && readable_)
        prepare_tiles();
}

void tiff_rows::prepare_tiles()
{
    TIFF* const file = files_[0];
    TIFFGetField(file, TIFFTAG_TILEWIDTH, &tile_.width);
    TIFFGetField(file, TIFFTAG_TILELENGTH, &tile_.height);
    tile_.row_bytes = static_cast<std::size_t>(std::max<tmsize_t>(TIFFTileRowSize(file), 0));
    tile_.bytes = static_cast<std::size_t>(std::max<tmsize_t>(TIFFTileSize(file), 0));
    std::uint16_t bits = 1;
    std::uint16_t samples = 1;
    TIFFGetFieldDefaulted(file, TIFFTAG_BITSPERSAMPLE, &bits);
    TIFFGetFieldDefaulted(file, TIFFTAG_SAMPLESPERPIXEL, &samples);
    const std::uint64_t row_bits = std::uint64_t{tile_.width} * bits * (rows_.size() > 1 ? 1U : samples);
    if (tile_.width == 0 || tile_.height == 0 || row_bits % 8 != 0 || row_bits / 8 > tile_.row_bytes
        || tile_.bytes / tile_.height < tile_.row_bytes) {
        readable_ = false;
        return;
    }
    tile_.across = (std::size_t{image_width_} + tile_.width - 1) / tile_.width;
    bands_.resize(rows_.size());
    for (auto& band : bands_)
        band.resize(tile_.across * tile_.bytes);
}

bool tiff_rows::next()
{
    bool done = true;
    if (tiled_) {
        done = next_tile_row();
    } else {
        for (std::size_t plane = 0; plane < rows_.size() && done; ++plane)
            done = TIFFReadScanline(files_[plane], rows_[plane].data(), y_, static_cast<std::uint16_t>(plane))
                == 1;
    }
    ++y_;
    return done;
}

bool tiff_rows::next_tile_row()
{
    const std::uint32_t in_tile = y_ % tile_.height;
    for (std::size_t plane = 0; plane < rows_.size(); ++plane) {
        if (in_tile == 0 && !load_tiles(plane))
            return false;
        std::vector<std::uint8_t>& row = rows_[plane];
        for (std::size_t i = 0; i < tile_.across; ++i) {
            const std::size_t at = i * tile_.row_bytes;
            if (at >= row.size())
                break;
            const std::uint8_t* const tile = bands_[plane].data() + i * tile_.bytes;
            std::copy_n(tile + in_tile * tile_.row_bytes, std::min(tile_.row_bytes, row.size() - at),
                row.data() + at);
        }
    }
    return true;
}

bool tiff_rows::load_tiles(std::size_t plane)
{
    for (std::size_t i = 0; i < tile_.across; ++i)
        if (TIFFReadTile(files_[0], bands_[plane].data() + i * tile_.bytes,
                static_cast<std::uint32_t>(i * tile_.width), y_, 0, static_cast<std::uint16_t>(plane))
            < 0)
            return false;
    return true;
}

} // namespace klv::imaging
