#pragma once

#include "klv/bitmaps/tile_info.h"
#include "klv/colour/colour.h"
#include "klv/colour/image_colour.h"
#include "klv/core/object.h"
#include "klv/core/rect.h"
#include "klv/geometry/distort.h"

#include <cstdint>

namespace klv {

/// Where an image goes and how it is drawn: a value. Rectangles are in the logical units of the device,
/// the source rectangle in pixels of the image.
class oIMGCONTEXT : public vOBJECT {
public:
    /// source null: the whole image. angle in degrees, about the centre of the destination, after the flips.
    oIMGCONTEXT(std::int32_t pixel_width, std::int32_t pixel_height, const vRECT* destination,
        const vRECT* source, double angle, int flip_h, int flip_v, int transparency) noexcept;
    /// The context keeps a reference to the distortion (may be null).
    oIMGCONTEXT(std::int32_t pixel_width, std::int32_t pixel_height, const vRECT* destination,
        const vRECT* source, IDistort* distort, int transparency) noexcept;
    oIMGCONTEXT(std::int32_t pixel_width, std::int32_t pixel_height, const vRECT* destination,
        const vRECT* source, double angle, int flip_h, int flip_v, const vIMAGECOLOUR& colour,
        const vTILEINFO& tiles) noexcept;
    oIMGCONTEXT(std::int32_t pixel_width, std::int32_t pixel_height, const vRECT* destination,
        const vRECT* source, IDistort* distort, const vIMAGECOLOUR& colour, const vTILEINFO& tiles) noexcept;
    oIMGCONTEXT(const oIMGCONTEXT&) = default;
    oIMGCONTEXT& operator=(const oIMGCONTEXT&) = default;

    virtual ~oIMGCONTEXT() = default;
    /// A new copy of the same class, the caller's to delete; null when memory is out.
    virtual oIMGCONTEXT* Duplicate() const noexcept = 0;
    /// Pixel sizes, destinations, distortions, image colours and tiles are equal.
    virtual int operator==(const oIMGCONTEXT& other) const noexcept;
    /// Whether an image rendered with one context can serve the other; position and size of the destination
    /// do not matter. Fixed tilings, and all tilings with exact_tiles, need equal tile sizes too.
    virtual int CompareRenderInfo(const oIMGCONTEXT& other, int exact_tiles) const noexcept;
    /// The bounding rectangle.
    virtual vRECT GetRenderArea() const noexcept { return bounds_; }
    virtual int HasVisibleArea() const noexcept { return 0; }
    virtual vRECT GetFullRenderArea() const noexcept { return GetRenderArea(); }
    virtual void SetVisibleArea(vRECT&) noexcept { }

    [[nodiscard]] std::int32_t GetPixelWidth() const noexcept { return pixel_width_; }
    [[nodiscard]] std::int32_t GetPixelHeight() const noexcept { return pixel_height_; }
    /// The size in pixels that the image takes when the source rectangle fills the destination.
    [[nodiscard]] std::int32_t GetBmpWidth() const noexcept { return bitmap_width_; }
    [[nodiscard]] std::int32_t GetBmpHeight() const noexcept { return bitmap_height_; }
    /// The bounds of the turned destination; the destination itself for a context with a distortion of its
    /// own, which need not map destinations.
    [[nodiscard]] const vRECT& GetBoundingRect() const noexcept { return bounds_; }
    [[nodiscard]] const vRECT& GetDstRect() const noexcept { return destination_; }
    [[nodiscard]] const vRECT& GetSrcRect() const noexcept { return source_; }
    /// Moves the destination, its bounds and a linear distortion to another top left corner.
    void MoveTo(const vPOINT& top_left) noexcept;
    [[nodiscard]] int GetFlipH() const noexcept { return flip_h_; }
    [[nodiscard]] int GetFlipV() const noexcept { return flip_v_; }
    /// Degrees, 0 or above.
    [[nodiscard]] double GetRotAngle() const noexcept { return angle_; }
    /// The distortion, kept by the context; may be null.
    [[nodiscard]] IDistort* GetDistort() const noexcept { return distort_.get(); }
    void SetDistort(IDistort* distort) noexcept { distort_ = distort_ref(distort); }
    [[nodiscard]] const vIMAGECOLOUR& GetImageColour() const noexcept { return colour_; }
    void SetImageColour(const vIMAGECOLOUR& colour) noexcept { colour_ = colour; }
    [[nodiscard]] const vTILEINFO& GetTileInfo() const noexcept { return tiles_; }
    void SetTileInfo(const vTILEINFO& tiles) noexcept { tiles_ = tiles; }
    /// The image is tiled with tiles of a fixed size (draw modes 1 and 2).
    [[nodiscard]] int QyFixedTile() const noexcept;

    /// These read the image colour.
    [[nodiscard]] int GetTransparency() const noexcept;
    [[nodiscard]] vCOLOUROVERRIDETYPE GetColourOverride() const noexcept;
    [[nodiscard]] vCOLOUR GetFgColour() const noexcept;
    [[nodiscard]] vCOLOUR GetMdColour() const noexcept;
    [[nodiscard]] vCOLOUR GetBkColour() const noexcept;

protected:
    /// Makes the context's matrix of its flips and its angle.
    void SetupIDistort(const vRECT* area) noexcept;

private:
    void set_rectangles(const vRECT* destination, const vRECT* source) noexcept;

    std::int32_t pixel_width_ = 0;
    std::int32_t pixel_height_ = 0;
    std::int32_t bitmap_width_ = 0;
    std::int32_t bitmap_height_ = 0;
    vRECT bounds_;
    vRECT destination_;
    vRECT source_;
    int flip_h_ = 0;
    int flip_v_ = 0;
    double angle_ = 0.0;
    vIMAGECOLOUR colour_;
    vTILEINFO tiles_;
    distort_ref distort_;
};

/// The image colour of a context made from an override colour (null: none), a background override (null:
/// none) and a transparency switch with its key colour (null: white).
vIMAGECOLOUR image_colour_of(const vCOLOUR* override_colour, const vCOLOUR* background, int transparency,
    const vCOLOUR* transparent, std::int32_t threshold) noexcept;

} // namespace klv
