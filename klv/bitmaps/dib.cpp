#include "klv/bitmaps/dib.h"

#include "klv/colour/colour.h"

#include <new>

namespace klv {

oDIB::oDIB(
    std::int32_t width, std::int32_t height, std::uint16_t bits, oCOLOUR_MODEL model, int flag) noexcept
    : header_(oDIBHEADER::of_depth(width, height, bits, model))
    , flag_(flag)
{
}

oDIB::oDIB(const oDIB& other) noexcept
    : vOBJECT(other)
    , header_(other.header_)
    , flag_(other.flag_)
{
    take_palette(other.colours());
}

oDIB& oDIB::operator=(const oDIB& other) noexcept
{
    if (this == &other)
        return *this;
    header_ = other.header_;
    flag_ = other.flag_;
    take_palette(other.colours());
    return *this;
}

int oDIB::GetHeader(oDIBHEADER& header) const noexcept
{
    header = header_;
    header.Palette(palette_.get());
    return 1;
}

const BITMAPINFOHEADER& oDIB::InfoHeader() const noexcept { return header_.info(); }

int oDIB::SetHeader(const oDIBHEADER& header) noexcept
{
    header_ = header;
    header_.Palette(nullptr);
    return 1;
}

int oDIB::GetPalette(oDIBPALETTE** palette) const noexcept
{
    if (palette)
        *palette = palette_.get();
    return palette_ ? palette_->GetNumColours() : 0;
}

int oDIB::SetPalette(const oDIBPALETTE& palette) noexcept
{
    if (&palette == palette_.get())
        return 1;
    const auto wanted = palette.colours();
    take_palette(wanted);
    return colours().size() == wanted.size();
}

oDIBPALETTE* oDIB::CreateColourOverridePalette(const vCOLOUR* colour) noexcept
{
    if (!palette_ || !colour)
        return nullptr;
    auto* shades = new oDIBPALETTE(*palette_);
    if (!shades)
        return nullptr;
    // The grey of an entry goes from the colour (black) to white, channel by channel.
    const auto shade = [](int channel, int grey) {
        return static_cast<std::uint8_t>(channel + (255 - channel) * grey / 255);
    };
    RGBQUAD* const entries = shades->GetRgbQuad();
    for (std::size_t i = 0; i < shades->colours().size(); ++i) {
        const int grey
            = (59 * entries[i].rgbGreen + 30 * entries[i].rgbRed + 11 * entries[i].rgbBlue + 50) / 100;
        entries[i].rgbBlue = shade(colour->Blue(), grey);
        entries[i].rgbGreen = shade(colour->Green(), grey);
        entries[i].rgbRed = shade(colour->Red(), grey);
    }
    return shades;
}

std::span<const RGBQUAD> oDIB::colours() const noexcept
{
    return palette_ ? std::as_const(*palette_).colours() : std::span<const RGBQUAD>{};
}

bool oDIB::has_lines(std::int32_t first, std::int32_t count) const noexcept
{
    return first >= 0 && count >= 0 && first <= Height() && count <= Height() - first;
}

bool oDIB::has_block(std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height) const noexcept
{
    return x >= 0 && width >= 0 && x <= Width() && width <= Width() - x && has_lines(y, height);
}

bool oDIB::has_layout_of(const oDIBHEADER& header) const noexcept
{
    return header.Width() == Width() && header.Height() == Height() && header.ColourDepth() == ColourDepth()
        && header.Size() == header_.Size();
}

void oDIB::take_palette(std::span<const RGBQUAD> colours) noexcept
{
    if (colours.empty()) {
        drop_palette();
        return;
    }
    palette_.reset(new oDIBPALETTE(colours.data(), static_cast<std::uint16_t>(colours.size())));
}

void oDIB::drop_palette() noexcept { palette_.reset(); }

int oDIB::GetReadWriteRoutines(std::int32_t source_bits, std::int32_t destination_bits,
    dib_read_routine& read, dib_write_routine& write) noexcept
{
    const bool to_8 = destination_bits == 8;
    switch (source_bits) {
    case 1:
        read = ReadLine1To8;
        write = WriteLine8;
        return 1;
    case 4:
        read = ReadLine4To8;
        write = WriteLine8;
        return 1;
    case 8:
        read = to_8 ? ReadLine8To8 : ReadLine8To24;
        write = to_8 ? WriteLine8 : WriteLine24;
        return 1;
    case 24:
        read = to_8 ? ReadLine24To8 : ReadLine24To24;
        write = to_8 ? WriteLine8 : WriteLine24;
        return 1;
    default:
        return 0;
    }
}

} // namespace klv
