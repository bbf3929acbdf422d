#pragma once

#include "klv/base/types.h"
#include "klv/bitmaps/colour_model.h"
#include "klv/bitmaps/palette.h"
#include "klv/core/object.h"
#include "klv/formats/dib_header.h"

#include <cstdint>

namespace klv {

/// The depth itself when bitmaps can have it, else 0.
constexpr std::uint16_t storable_depth(std::int32_t bits)
{
    const bool known = bits == 1 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32;
    return known ? static_cast<std::uint16_t>(bits) : std::uint16_t{0};
}

/// The header of a bitmap: the 40-byte info header, the colour model and a colour table that it does not own.
class oDIBHEADER : public vOBJECT {
public:
    /// Width 0, height 1, 24 bits, both resolutions 100 pixels per metre.
    oDIBHEADER() noexcept;
    /// Resolutions are given in dots per inch and kept as dpi x 40 pixels per metre.
    /// A size whose image needs more bytes than 32 bits can say has image size 0.
    oDIBHEADER(std::int32_t width, std::int32_t height, std::int32_t horizontal_dpi,
        std::int32_t vertical_dpi, oCOLOUR_MODEL model) noexcept;
    /// Width, height and bits as given: 100 pixels per metre, 2^bits colours used (0 for 0 and 32 bits).
    static oDIBHEADER of_depth(
        std::int32_t width, std::int32_t height, std::uint16_t bits, oCOLOUR_MODEL model) noexcept;

    [[nodiscard]] std::int32_t Width() const noexcept { return info_.biWidth; }
    [[nodiscard]] std::int32_t Height() const noexcept { return info_.biHeight; }
    [[nodiscard]] std::uint16_t ColourDepth() const noexcept { return info_.biBitCount; }
    [[nodiscard]] std::uint32_t ColoursUsed() const noexcept { return info_.biClrUsed; }
    [[nodiscard]] std::int32_t HorzDPI() const noexcept;
    [[nodiscard]] std::int32_t VertDPI() const noexcept;
    /// Image size divided by height; 0 when the height is 0.
    [[nodiscard]] std::uint32_t BytesPerLine() const noexcept;
    /// Image size in bytes.
    [[nodiscard]] std::uint32_t Size() const noexcept { return info_.biSizeImage; }

    [[nodiscard]] oCOLOUR_MODEL ColourModel() const noexcept { return model_; }
    void ColourModel(oCOLOUR_MODEL model) noexcept { model_ = model; }
    [[nodiscard]] oPALETTE* Palette() const noexcept { return palette_; }
    void Palette(oPALETTE* palette) noexcept { palette_ = palette; }

    [[nodiscard]] const BITMAPINFOHEADER& info() const noexcept { return info_; }
    [[nodiscard]] BITMAPINFOHEADER& info() noexcept { return info_; }

    /// Pixels per metre that the interface counts for one dot per inch.
    static constexpr std::int32_t pixels_per_metre_of_dpi = 40;

private:
    void set_size(std::int32_t width, std::int32_t height, std::uint16_t bits) noexcept;

    BITMAPINFOHEADER info_{};
    oCOLOUR_MODEL model_ = oMODEL_RGB24;
    oPALETTE* palette_ = nullptr;
};

} // namespace klv
