#pragma once

#include "klv/bitmaps/colour_model.h"
#include "klv/bitmaps/dib_header.h"
#include "klv/bitmaps/dib_palette.h"
#include "klv/bitmaps/dib_rows.h"
#include "klv/core/object.h"

#include <cstdint>
#include <memory>

namespace klv {

class vCOLOUR;
class vSTREAM;

/// A device-independent bitmap. Line 0 is the bottom line; a line is BytesPerLine() bytes in the bitmap's
/// own depth. Lines handed over are always in that layout: the model argument of the setters is not
/// consulted, that of the getters (may be null) receives the bitmap's model.
/// Operations answer 1 when done and 0 when refused, unless they say otherwise; none throws.
class oDIB : public vOBJECT {
public:
    virtual ~oDIB() = default;
    virtual int GetHeader(oDIBHEADER& header) const noexcept;
    virtual const BITMAPINFOHEADER& InfoHeader() const noexcept;
    /// Takes size, depth and resolution over and makes room for the pixels, which are 0 afterwards (the
    /// lines of a bitmap of the same size, depth and stride stay). The palette stays.
    virtual int SetHeader(const oDIBHEADER& header) noexcept;
    /// Answers the number of colours and the palette, which the bitmap keeps (null and 0 when it has none).
    virtual int GetPalette(oDIBPALETTE** palette) const noexcept;
    /// Keeps a copy.
    virtual int SetPalette(const oDIBPALETTE& palette) noexcept;
    /// A new palette that shows the bitmap in shades of the colour, black becoming the colour and white
    /// staying white; the caller owns it. Null without a palette, without a colour or when memory is out.
    virtual oDIBPALETTE* CreateColourOverridePalette(const vCOLOUR* colour) noexcept;
    /// A block's rows are width pixels in the bitmap's depth, padded to a multiple of 4 bytes, bottom line
    /// first; it has to lie inside the bitmap.
    virtual int SetImageBlock(const std::uint8_t* pixels, oCOLOUR_MODEL model, std::int32_t x, std::int32_t y,
        std::int32_t width, std::int32_t height) noexcept = 0;
    virtual int GetImageBlock(std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
        std::uint8_t* pixels, oCOLOUR_MODEL* model) const noexcept = 0;
    virtual int SetImageLines(
        const std::uint8_t* pixels, oCOLOUR_MODEL model, std::int32_t first, std::int32_t count) noexcept = 0;
    virtual int GetImageLines(std::int32_t first, std::int32_t count, std::uint8_t* pixels,
        oCOLOUR_MODEL* model) const noexcept = 0;
    /// Direct access to the lines from `first` on, until ReleaseImageLines. One lock at a time.
    virtual int LockImageLines(
        std::int32_t first, std::int32_t count, std::uint8_t** pixels, oCOLOUR_MODEL model) noexcept = 0;
    virtual int ReleaseImageLines(int changed) noexcept = 0;
    virtual int IsCompressed() const noexcept { return 0; }
    /// Reads the stream form. Answers nothing; a bitmap that could not be read is empty (Width() 0).
    virtual void operator<<(vSTREAM& stream) noexcept = 0;
    virtual void operator>>(vSTREAM& stream) const noexcept = 0;

    [[nodiscard]] std::int32_t Width() const noexcept { return header_.Width(); }
    [[nodiscard]] std::int32_t Height() const noexcept { return header_.Height(); }
    [[nodiscard]] std::uint16_t ColourDepth() const noexcept { return header_.ColourDepth(); }
    [[nodiscard]] std::uint32_t BytesPerLine() const noexcept { return header_.BytesPerLine(); }
    /// The integer that the constructor was given.
    [[nodiscard]] int Flag() const noexcept { return flag_; }
    /// The colours as entries; empty without a palette.
    [[nodiscard]] std::span<const RGBQUAD> colours() const noexcept;

    /// The line converters for a copy to another depth; answers 0 when there are none. Sources of 1 and 4
    /// bits become 8-bit whatever the destination.
    static int GetReadWriteRoutines(std::int32_t source_bits, std::int32_t destination_bits,
        dib_read_routine& read, dib_write_routine& write) noexcept;

protected:
    explicit oDIB(int flag) noexcept
        : flag_(flag)
    {
    }
    oDIB(std::int32_t width, std::int32_t height, std::uint16_t bits, oCOLOUR_MODEL model, int flag) noexcept;
    oDIB(const oDIB& other) noexcept;
    oDIB& operator=(const oDIB& other) noexcept;
    oDIB(oDIB&&) noexcept = default;
    oDIB& operator=(oDIB&&) noexcept = default;

    /// True when lines [first, first + count) are lines of this bitmap.
    [[nodiscard]] bool has_lines(std::int32_t first, std::int32_t count) const noexcept;
    [[nodiscard]] bool has_block(
        std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height) const noexcept;
    /// Size, depth and stride are those of the header, so that the pixels can stay.
    [[nodiscard]] bool has_layout_of(const oDIBHEADER& header) const noexcept;
    void take_palette(std::span<const RGBQUAD> colours) noexcept;
    void drop_palette() noexcept;

    oDIBHEADER header_;
    std::unique_ptr<oDIBPALETTE> palette_;
    int flag_ = 0;
};

} // namespace klv
