#include "klv/core/list.h"
#include "klv/devices/device.h"
#include "klv/devices/font_detail.h"
#include "klv/gdi/gdi.h"

#include <new>

/// The installed font families, as a device lists them.
namespace klv {
namespace {

constexpr std::size_t font_table_step = 10;

}

int vDEVICE::EnumFontFamilyProc(
    const LOGFONTA* font, const TEXTMETRICA*, std::uint32_t, LPARAM device) noexcept
{
    auto& families = reinterpret_cast<vDEVICE*>(device)->fonts_->families;
    try {
        if (families.size() == families.capacity())
            families.reserve(families.size() + font_table_step);
        families.emplace_back(font->lfFaceName, font->lfCharSet, font->lfPitchAndFamily);
    } catch (const std::bad_alloc&) {
        return 0;
    }
    return 1;
}

int vDEVICE::LoadFont() noexcept
{
    if (!fonts_)
        fonts_.reset(new font_table);
    if (fonts_ && fonts_->families.empty()) {
        const active_dc dc(*this);
        EnumFontFamiliesA(dc, nullptr, &vDEVICE::EnumFontFamilyProc, reinterpret_cast<LPARAM>(this));
    }
    return NoFonts();
}

int vDEVICE::NoFonts() const noexcept { return fonts_ ? static_cast<int>(fonts_->families.size()) : 0; }

vFONT& vDEVICE::GetFont(ITERATOR& position) noexcept
{
    static thread_local vFONT none;
    if (NoFonts() == 0)
        LoadFont();
    const std::size_t index = position();
    position.Next();
    if (!fonts_ || index >= fonts_->families.size())
        return none = vFONT();
    return fonts_->families[index];
}

} // namespace klv
