#include "klv/bitmaps/dib_palette.h"

#include "klv/colour/colour.h"

namespace klv {

oDIBPALETTE::oDIBPALETTE(const RGBQUAD* colours, std::uint16_t count) noexcept
{
    if (!make_room(count) || !colours)
        return;
    for (std::size_t i = 0; i < count; ++i)
        entries_[i] = {colours[i].rgbBlue, colours[i].rgbGreen, colours[i].rgbRed, 0};
}

oDIBPALETTE::oDIBPALETTE(const PALETTEENTRY* colours, std::uint16_t count) noexcept
{
    if (!make_room(count) || !colours)
        return;
    for (std::size_t i = 0; i < count; ++i)
        entries_[i] = {colours[i].peBlue, colours[i].peGreen, colours[i].peRed, 0};
}

oDIBPALETTE::oDIBPALETTE(const oDIBPALETTE& other) noexcept
    : oDIBPALETTE(other.GetRgbQuad(), static_cast<std::uint16_t>(other.entries_.size()))
{
}

oDIBPALETTE& oDIBPALETTE::operator=(const oDIBPALETTE& other) noexcept
{
    if (this == &other)
        return *this;
    oDIBPALETTE copy(other);
    entries_.swap(copy.entries_);
    SetNumColours(copy.GetNumColours());
    return *this;
}

bool oDIBPALETTE::make_room(std::uint16_t count) noexcept
{
    if (!entries_.resize(count))
        return false;
    SetNumColours(count);
    return true;
}

int oDIBPALETTE::SetColour(std::uint32_t index, const vCOLOUR& colour) noexcept
{
    if (index >= colours().size())
        return 0;
    entries_[index] = {colour.Blue(), colour.Green(), colour.Red(), 0};
    return 1;
}

int oDIBPALETTE::GetColour(std::uint32_t index, vCOLOUR& colour) const noexcept
{
    if (index >= colours().size())
        return 0;
    const RGBQUAD& entry = entries_[index];
    colour = vCOLOUR(entry.rgbRed, entry.rgbGreen, entry.rgbBlue);
    return 1;
}

int oDIBPALETTE::GetNearestColour(const vCOLOUR&, vCOLOUR&) const noexcept { return 0; }

const RGBQUAD* oDIBPALETTE::GetRgbQuad() const noexcept
{
    return entries_.empty() ? nullptr : entries_.data();
}
RGBQUAD* oDIBPALETTE::GetRgbQuad() noexcept { return entries_.empty() ? nullptr : entries_.data(); }

std::span<const RGBQUAD> oDIBPALETTE::colours() const noexcept
{
    return entries_.span().first(std::min<std::size_t>(entries_.size(), GetNumColours()));
}

} // namespace klv
