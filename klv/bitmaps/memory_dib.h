#pragma once

#include "klv/base/buffer.h"
#include "klv/bitmaps/dib.h"

#include <cstdint>

namespace klv {

class IDistort;
class vRECT;
class vTILEINFO;

/// A bitmap whose pixels are one block of memory. When the block could not be had there are no pixels:
/// HasPixels() answers 0 and LockImageLines fails.
class oMEMDIB : public oDIB {
public:
    explicit oMEMDIB(int flag = 0) noexcept;
    /// Pixels are 0. No palette; the model only is recorded. Bits of 1, 4, 8, 16, 24 or 32.
    oMEMDIB(
        std::int32_t width, std::int32_t height, std::int32_t bits, oCOLOUR_MODEL model, int flag) noexcept;
    /// Reads the stream form.
    oMEMDIB(vSTREAM& stream, int flag) noexcept;
    /// Copies a packed bitmap: info header, colour table or masks, pixels. The caller vouches for the memory
    /// that the header describes.
    oMEMDIB(const BITMAPINFO* packed, int flag) noexcept;
    oMEMDIB(const oDIB& source, int flag) noexcept;
    /// A copy of width x height pixels (0: as the source) in another depth (1, 4, 8 or 24; 0: as the source).
    /// smooth: area averages and bilinear samples, as far as the depths allow, else the nearest pixels.
    oMEMDIB(const oDIB& source, std::uint32_t width, std::uint32_t height, int bits, int smooth,
        int flag) noexcept;
    /// The part source_rect of the source, mapped into destination_rect and then through the distortion
    /// (null: none), cut to clip (null: all of it). The bitmap is as large as the bounds of what is drawn, at
    /// most limit pixels on the longer side (0: no limit). Tiling repeats the source over the destination.
    /// Pixels that the distorted source does not cover are white.
    oMEMDIB(const oDIB& source, const vRECT& source_rect, const vRECT& destination_rect, const vRECT* clip,
        const IDistort* distort, oCOLOUR_MODEL model, const vTILEINFO& tiles, int limit) noexcept;
    /// The same with flips and a rotation in degrees about the centre of destination_rect.
    oMEMDIB(const oDIB& source, const vRECT& source_rect, const vRECT& destination_rect, const vRECT* clip,
        int flip_h, int flip_v, double angle, oCOLOUR_MODEL model) noexcept;

    oMEMDIB(const oMEMDIB& other) noexcept;
    oMEMDIB& operator=(const oMEMDIB& other) noexcept;
    oMEMDIB(oMEMDIB&&) noexcept = default;
    oMEMDIB& operator=(oMEMDIB&&) noexcept = default;

    int SetHeader(const oDIBHEADER& header) noexcept override;
    int SetImageBlock(const std::uint8_t* pixels, oCOLOUR_MODEL model, std::int32_t x, std::int32_t y,
        std::int32_t width, std::int32_t height) noexcept override;
    int GetImageBlock(std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
        std::uint8_t* pixels, oCOLOUR_MODEL* model) const noexcept override;
    int SetImageLines(const std::uint8_t* pixels, oCOLOUR_MODEL model, std::int32_t first,
        std::int32_t count) noexcept override;
    int GetImageLines(std::int32_t first, std::int32_t count, std::uint8_t* pixels,
        oCOLOUR_MODEL* model) const noexcept override;
    int LockImageLines(
        std::int32_t first, std::int32_t count, std::uint8_t** pixels, oCOLOUR_MODEL model) noexcept override;
    int ReleaseImageLines(int changed) noexcept override;
    void operator<<(vSTREAM& stream) noexcept override;
    void operator>>(vSTREAM& stream) const noexcept override;

    [[nodiscard]] int HasPixels() const noexcept;
    /// Turns the bitmap into one of fewer bits (1, 4 or 8) in the memory that it has: exactly when it has few
    /// enough colours, else dithered. Answers 0, and keeps the bitmap, when the depth would not shrink, the
    /// bitmap has no pixels or memory is out.
    int Reduce(int bits) noexcept;
    /// The bytes of one line, bottom line 0; empty for a line that is not there.
    [[nodiscard]] std::span<const std::uint8_t> line(std::int32_t index) const noexcept;
    [[nodiscard]] std::span<std::uint8_t> line(std::int32_t index) noexcept;
    /// Pixel bytes that the last reading found in its stream; the rest of the image is 0.
    [[nodiscard]] std::uint32_t BytesRead() const noexcept { return bytes_read_; }

private:
    [[nodiscard]] bool make_pixels() noexcept;
    void take(
        const oDIBHEADER& header, std::span<const RGBQUAD> colours, vBUFFER<std::uint8_t>&& pixels) noexcept;
    void copy_from(const oDIB& source) noexcept;
    void make_empty() noexcept;

    vBUFFER<std::uint8_t> pixels_;
    std::uint32_t bytes_read_ = 0;
    bool locked_ = false;
};

} // namespace klv
