#pragma once

#include "klv/core/object.h"
#include "klv/core/point.h"
#include "klv/core/rect.h"

#include <cstdint>

namespace klv {

class oIMGCONTEXT;
class vDEVICE;

/// Any value but vTILE_NONE tiles the image.
enum vTILETYPE : std::int32_t { vTILE_NONE = 0, vTILE_TILED = 1 };

/// Where the number of tiles comes from.
enum vTILEDRAWMODE : std::int32_t {
    vTILE_BY_COUNT = 0, ///< the numbers across and down as stored
    vTILE_FIXED_SIZE = 1, ///< as many tiles of the tile size as cover the area
    vTILE_FIXED_SIZE_AND_ONE = 2, ///< one more each way
};

/// How an image is repeated over its destination.
class vTILEINFO : public vOBJECT {
public:
    vTILEINFO() = default;
    /// \param across,down tiles; below 1 counts as 1
    vTILEINFO(const vTILETYPE& type, int across, int down) noexcept;

    [[nodiscard]] vTILETYPE GetType() const noexcept { return type_; }
    [[nodiscard]] vTILEDRAWMODE GetTileDrawMode() const noexcept { return mode_; }
    [[nodiscard]] const vSIZE& GetTileSize() const noexcept { return size_; }
    [[nodiscard]] const vPOINT& GetTileOrigin() const noexcept { return origin_; }
    [[nodiscard]] int GetTilesAcross() const noexcept { return across_; }
    [[nodiscard]] int GetTilesDown() const noexcept { return down_; }

    void SetType(vTILETYPE type) noexcept { type_ = type; }
    void SetTileDrawMode(vTILEDRAWMODE mode) noexcept { mode_ = mode; }
    void SetTileSize(const vSIZE& size) noexcept { size_ = size; }
    void SetTileOrigin(const vPOINT& origin) noexcept { origin_ = origin; }
    /// Below 1 counts as 1.
    void SetTilesAcross(int tiles) noexcept { across_ = tiles < 1 ? 1 : tiles; }
    void SetTilesDown(int tiles) noexcept { down_ = tiles < 1 ? 1 : tiles; }

    /// The tile size counts only for a fixed-size mode, the origin never.
    bool operator==(const vTILEINFO& other) const noexcept;
    /// Type, numbers and mode.
    [[nodiscard]] int CompareNoScale(const vTILEINFO& other) const noexcept;

    /// For the fixed-size modes, sets the numbers of tiles that cover the area. A tile size that is not
    /// positive leaves them as they are.
    void CalculateTilesAcrossDown(vDEVICE& device, vRECT& area) noexcept;
    /// Places the tiles of an image for drawing (defined with the image contexts).
    void CalculateImageRect(
        vDEVICE& device, oIMGCONTEXT& context, vRECT* image, vRECT* area, vRECT* tile) noexcept;

private:
    vTILETYPE type_ = vTILE_NONE;
    vTILEDRAWMODE mode_ = vTILE_BY_COUNT;
    vSIZE size_;
    vPOINT origin_;
    std::int32_t across_ = 1;
    std::int32_t down_ = 1;
};

} // namespace klv
