#pragma once

#include "klv/imaging/tiff_file.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace klv::imaging {

/// The rows of a TIFF image as they are stored, whether in strips or tiles. Each plane of an image with
/// separate planes is read through a file of its own, so that none of them has to wait in memory.
class tiff_rows {
public:
    /// file has its directory read; planes: how many are wanted, 1 for interleaved samples.
    tiff_rows(image_io& stream, tiff_file& file, std::size_t planes);

    /// False for layouts whose rows have no whole bytes in a tile.
    [[nodiscard]] bool readable() const { return readable_; }
    /// Reads the next row of each plane.
    [[nodiscard]] bool next();
    [[nodiscard]] std::span<const std::uint8_t> plane(std::size_t number) const { return rows_[number]; }

private:
    void prepare_tiles();
    [[nodiscard]] bool next_tile_row();
    [[nodiscard]] bool load_tiles(std::size_t plane);

    struct tile_geometry {
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        std::size_t row_bytes = 0;
        std::size_t bytes = 0;
        std::size_t across = 0;
    };

    std::vector<std::unique_ptr<tiff_file>> more_files_; ///< of the planes after the first
    std::vector<TIFF*> files_;
    std::vector<std::vector<std::uint8_t>> rows_;
    std::uint32_t y_ = 0;
    bool readable_ = true;
    bool tiled_;
    tile_geometry tile_;
    std::uint32_t image_width_;
    std::vector<std::vector<std::uint8_t>> bands_; ///< a row of tiles of each plane, tile after tile
};

} // namespace klv::imaging
