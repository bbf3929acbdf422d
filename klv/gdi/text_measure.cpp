#include "klv/gdi/gdi.h"
#include "klv/gdi/state/context.h"
#include "klv/gdi/text/font_face.h"
#include "klv/gdi/text/text_run.h"

#include <cstring>
#include <utility>

namespace klv::gdi {

selected_font find_selected_font(const drawing_state& state)
{
    selected_font selected;
    selected.object = state.font.get();
    const auto ratio = [](LONG viewport, LONG window) {
        const double scale = window != 0 ? std::abs(static_cast<double>(viewport) / window) : 1;
        return scale > 0 ? scale : 1;
    };
    const mapping& map = state.map;
    selected.scale = {ratio(map.viewport_extent.cx, map.window_extent.cx),
        ratio(map.viewport_extent.cy, map.window_extent.cy)};
    auto font = realise(*selected.object, selected.scale);
    if (font->usable())
        selected.font = std::move(font);
    return selected;
}

namespace {

LONG logical(pixels length, double scale)
{
    constexpr double limit = 0x7FFFFFFF;
    return static_cast<LONG>(std::lround(std::clamp(static_cast<double>(length) / scale, -limit, limit)));
}

// The first and last character of the sets, their default and their break character.
constexpr BYTE first_character = 0x20;
constexpr BYTE last_character = 0xFF;
constexpr BYTE default_character = 0x80;

BYTE pitch_and_family(const LOGFONTA& description, const font_face& face)
{
    const auto family = static_cast<BYTE>(description.lfPitchAndFamily & 0xF0);
    const BYTE pitch = face.fixed_pitch() ? 0 : TMPF_FIXED_PITCH;
    return static_cast<BYTE>(family | pitch | TMPF_VECTOR | TMPF_TRUETYPE);
}

TEXTMETRICA metrics_of(const drawing_context& dc, const selected_font& selected)
{
    const font_measures& px = selected.font->measures();
    const LOGFONTA& description = selected.object->logical;
    const double x = selected.scale.x;
    const double y = selected.scale.y;
    TEXTMETRICA tm{};
    tm.tmHeight = logical(pixels{px.ascent} + px.descent, y);
    tm.tmAscent = logical(px.ascent, y);
    tm.tmDescent = tm.tmHeight - tm.tmAscent;
    tm.tmInternalLeading = logical(px.internal_leading, y);
    tm.tmExternalLeading = logical(px.external_leading, y);
    tm.tmAveCharWidth = logical(px.average_width, x);
    tm.tmMaxCharWidth = logical(px.maximum_width, x);
    tm.tmWeight = description.lfWeight > 0 ? description.lfWeight : FW_NORMAL;
    tm.tmDigitizedAspectX = dc.out->dots_per_inch();
    tm.tmDigitizedAspectY = dc.out->dots_per_inch();
    tm.tmFirstChar = first_character;
    tm.tmLastChar = last_character;
    tm.tmDefaultChar = default_character;
    tm.tmBreakChar = ' ';
    tm.tmItalic = description.lfItalic != 0;
    tm.tmUnderlined = description.lfUnderline != 0;
    tm.tmStruckOut = description.lfStrikeOut != 0;
    tm.tmPitchAndFamily = pitch_and_family(description, *selected.font->face());
    tm.tmCharSet = selected.font->charset();
    return tm;
}

text_character single_byte(const realised_font& font, std::uint32_t code)
{
    const char byte = static_cast<char>(static_cast<std::uint8_t>(code));
    return font.next({&byte, 1});
}

// A range of characters of one byte, first to last, both included.
bool is_range(std::uint32_t first, std::uint32_t last) { return first <= last && last <= 0xFF; }

// Calls body(context, selected font) where a context has one, and answers 0 where not.
template <class Body> auto with_font(HDC handle, Body&& body) noexcept
{
    using answer = decltype(body(std::declval<drawing_context&>(), std::declval<selected_font&>()));
    return with_context(handle, [&](drawing_context& dc) {
        selected_font selected = find_selected_font(dc.state);
        return selected.font ? body(dc, selected) : answer{};
    });
}

struct character_code {
    std::uint16_t code;
    std::uint32_t glyph;
};

std::vector<character_code> characters_of(const realised_font& font)
{
    std::vector<character_code> characters;
    for (std::uint32_t code = first_character; code <= last_character; ++code) {
        const text_character c = single_byte(font, code);
        const std::uint32_t glyph = c.unicode != 0 ? font.face()->glyph_of(c.unicode) : 0;
        if (glyph != 0)
            characters.push_back({c.code, glyph});
    }
    return characters;
}

} // namespace
} // namespace klv::gdi

namespace klv {

using namespace gdi;

int GetTextMetricsA(HDC dc, TEXTMETRICA* metrics) noexcept
{
    return with_font(dc, [&](drawing_context& context, selected_font& selected) {
        if (!metrics)
            return 0;
        *metrics = metrics_of(context, selected);
        return 1;
    });
}

int GetTextExtentPoint32A(HDC dc, const char* text, int count, SIZE* extent) noexcept
{
    return with_font(dc, [&](drawing_context& context, selected_font& selected) {
        if (!extent || count < 0 || (!text && count > 0))
            return 0;
        const std::string_view bytes(text, static_cast<std::size_t>(count));
        const font_measures& px = selected.font->measures();
        extent->cx = logical(text_run(context.state, selected, bytes, nullptr).length(), selected.scale.x);
        extent->cy = logical(pixels{px.ascent} + px.descent, selected.scale.y);
        return 1;
    });
}

int GetCharWidth32A(HDC dc, std::uint32_t first, std::uint32_t last, std::int32_t* widths) noexcept
{
    return with_font(dc, [&](drawing_context&, selected_font& selected) {
        if (!widths || !is_range(first, last))
            return 0;
        for (std::uint32_t code = first; code <= last; ++code)
            widths[code - first]
                = logical(selected.font->advance(single_byte(*selected.font, code)), selected.scale.x);
        return 1;
    });
}

int GetCharWidthA(HDC dc, std::uint32_t first, std::uint32_t last, std::int32_t* widths) noexcept
{
    return GetCharWidth32A(dc, first, last, widths);
}

std::uint32_t GetKerningPairsA(HDC dc, std::uint32_t count, KERNINGPAIR* pairs) noexcept
{
    return with_font(dc, [&](drawing_context&, selected_font& selected) -> std::uint32_t {
        const realised_font& font = *selected.font;
        if (!font.face()->has_kerning())
            return 0;
        const auto characters = characters_of(font);
        std::uint32_t found = 0;
        for (const auto& left : characters)
            for (const auto& right : characters) {
                const LONG amount
                    = logical(font.across(font.face()->kerning(left.glyph, right.glyph)), selected.scale.x);
                if (amount == 0)
                    continue;
                if (pairs && found == count)
                    return found;
                if (pairs)
                    pairs[found] = {left.code, right.code, amount};
                ++found;
            }
        return found;
    });
}

namespace {

constexpr std::uint32_t no_alignment = 0xFFFFFFFF;

} // namespace

std::uint32_t SetTextAlign(HDC dc, std::uint32_t align) noexcept
{
    return with_context(dc, no_alignment, [=](drawing_context& context) {
        const std::uint32_t old = std::exchange(context.state.text_align, align);
        context.tell(setting::text_align, align);
        return old;
    });
}

int SetTextCharacterExtra(HDC dc, int extra) noexcept
{
    return with_context(dc, [=](drawing_context& context) {
        const INT old = std::exchange(context.state.character_extra, extra);
        context.tell(setting::character_extra, extra);
        return old;
    });
}

int SetTextJustification(HDC dc, int extra, int count) noexcept
{
    return with_context(dc, [=](drawing_context& context) {
        context.state.justify_extra = count > 0 ? extra : 0;
        context.state.justify_count = std::max(count, 0);
        context.tell(setting::justification, extra, count);
        return 1;
    });
}

} // namespace klv
