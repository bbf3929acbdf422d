#pragma once

#include "klv/bitmaps/image_context.h"
#include "klv/core/object.h"
#include "klv/core/point.h"

#include <cstdint>

namespace klv {

class oDIB;
class vDEVICE;
class vMETAFILE;
class vSHAPE;

enum vIMAGETYPE : std::int32_t { vIMAGE_DIB = 0, vIMAGE_METAFILE = 1 };

/// How tiles lie beside each other: in a grid, or every second row or column shifted by half a tile.
enum vTILESPEC : std::int32_t { vTILE_GRID = 0, vTILE_ROWS_SHIFTED = 1, vTILE_COLUMNS_SHIFTED = 2 };

/// Something that can be drawn with a context. Drawing goes through the image cache: clear its entries
/// (vIMAGECACHE::Clear with Id()) when the bitmap or picture behind the image changes.
class oIMAGE : public vOBJECT {
public:
    oIMAGE() = default;
    oIMAGE(const oIMAGE&) = delete;
    oIMAGE& operator=(const oIMAGE&) = delete;

    virtual vIMAGETYPE ImageType() const noexcept = 0;
    /// Answers 1.
    virtual int Draw(vDEVICE& device, oIMGCONTEXT& context) noexcept = 0;
    /// Takes the image out of the cache.
    virtual ~oIMAGE();

    /// Repeats the image over a shape. A tile has the size of the context's destination; one tile has its
    /// top left corner at the origin. Answers 0 when the tile or the shape has no size.
    int Tile(vDEVICE& device, const oIMGCONTEXT& context, const vSHAPE& area, const vPOINT& origin,
        vTILESPEC layout) noexcept;
    /// The number under which the cache knows this image; it stands for the image's address.
    [[nodiscard]] std::uint32_t Id() const noexcept;
};

class oDIBIMAGE : public oIMAGE {
public:
    explicit oDIBIMAGE(oDIB& bitmap) noexcept
        : bitmap_(bitmap)
    {
    }
    vIMAGETYPE ImageType() const noexcept override { return vIMAGE_DIB; }
    int Draw(vDEVICE& device, oIMGCONTEXT& context) noexcept override;

private:
    oDIB& bitmap_;
};

class oMFIMAGE : public oIMAGE {
public:
    explicit oMFIMAGE(vMETAFILE& picture) noexcept
        : picture_(picture)
    {
    }
    vIMAGETYPE ImageType() const noexcept override { return vIMAGE_METAFILE; }
    int Draw(vDEVICE& device, oIMGCONTEXT& context) noexcept override;

private:
    vMETAFILE& picture_;
};

} // namespace klv
