#include "klv/gdi/text/font.h"

#include "klv/gdi/gdi.h"
#include "klv/gdi/text/font_names.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <list>
#include <numbers>

namespace klv::gdi {
namespace {

// Realised fonts kept, the last used first. More than a picture uses at a time; each holds its masks.
constexpr std::size_t fonts_kept = 32;
// The em square's height of a font of height 0: 12 points at 96 dots per inch.
constexpr double default_em = 16;
// No surface shows a whole glyph of this size.
constexpr double largest_em = 16000;
constexpr double tenths_to_radians = std::numbers::pi / 1800;
constexpr std::int32_t full_turn = 3600;
// Where the strike-out line lies, above the baseline, as a part of the em square.
constexpr double strikeout_height = 0.26;
// The average width that Symbol states, in em squares; pictures that stretch it reckon with this.
constexpr double symbol_average_width = 1230.0 / 2048;

std::int32_t rounded(double value)
{
    constexpr double limit = 1e9;
    return static_cast<std::int32_t>(std::lround(std::clamp(value, -limit, limit)));
}

std::string_view face_name(const LOGFONTA& logical)
{
    return {logical.lfFaceName, strnlen(logical.lfFaceName, LF_FACESIZE)};
}

const char* base_family(symbol_set set)
{
    return set == symbol_set::symbol || set == symbol_set::mt_extra ? "Symbol" : "Dingbats";
}

bool equal_ignoring_case(std::string_view a, std::string_view b)
{
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; };
    return std::ranges::equal(a, b, {}, lower, lower);
}

} // namespace

INT font_object::describe(INT size, void* buffer) const
{
    return copy_description(&logical, sizeof logical, size, buffer);
}

realised_font::realised_font(const LOGFONTA& logical, const font_scale& scale)
{
    choose_face(logical);
    single_.resize(256);
    const std::int32_t tenths = logical.lfEscapement % full_turn;
    turned_ = tenths != 0;
    cosine_ = std::cos(tenths * tenths_to_radians);
    sine_ = std::sin(tenths * tenths_to_radians);
    if (usable())
        measure(logical, scale);
}

void realised_font::choose_face(const LOGFONTA& logical)
{
    auto [name, charset] = split_face_name(face_name(logical), logical.lfCharSet);
    symbols_ = symbol_set_of_face(name);
    page_ = &code_page::of_charset(charset);
    request_ = {
        page_->utf8(outline_family(name)), logical.lfWeight, logical.lfItalic != 0, logical.lfPitchAndFamily};
    face_ = find_face(request_);
    if (charset == SYMBOL_CHARSET && !symbols_)
        symbols_
            = (logical.lfPitchAndFamily & 0xF0) == FF_DECORATIVE ? symbol_set::wingdings : symbol_set::symbol;
    charset_ = symbols_ ? SYMBOL_CHARSET : charset;
    const bool real_symbol_face
        = face_ && face_->has_symbol_codes() && equal_ignoring_case(face_->family(), name);
    if (symbols_ && !real_symbol_face) {
        request_.family = base_family(*symbols_);
        face_ = find_face(request_);
    }
}

void realised_font::measure(const LOGFONTA& logical, const font_scale& scale)
{
    const double height = logical.lfHeight * scale.y;
    const double units = face_->units_per_em();
    const double cell_units = face_->ascent() + face_->descent();
    em_ = height < 0 ? -height : height > 0 ? height * units / cell_units : default_em;
    em_ = std::clamp(em_, 1.0, largest_em);
    const double average_units
        = symbols_ == symbol_set::symbol ? symbol_average_width * units : face_->average_width();
    if (logical.lfWidth != 0 && average_units > 0) {
        const double natural = average_units * em_ / units;
        stretch_ = std::clamp(std::abs(double{1} * logical.lfWidth) * scale.x / natural, 0.01, 100.0);
    }
    const std::int32_t cell = rounded(cell_units * em_ / units);
    measures_.ascent = down(face_->ascent());
    measures_.descent = cell - measures_.ascent;
    measures_.internal_leading = std::max(0, cell - rounded(em_));
    measures_.external_leading = down(face_->external_leading());
    measures_.average_width = rounded(average_units * em_ * stretch_ / units);
    measures_.maximum_width = across(face_->maximum_width());
    measures_.line_thickness = std::max(1, down(face_->underline_thickness()));
    measures_.underline_offset = down(-face_->underline_position() - face_->underline_thickness() / 2);
    measures_.strikeout_offset = -rounded(em_ * strikeout_height);
}

std::int32_t realised_font::across(int units) const
{
    return rounded(units * em_ * stretch_ / face_->units_per_em());
}

std::int32_t realised_font::down(int units) const { return rounded(units * em_ / face_->units_per_em()); }

text_character realised_font::next(std::string_view text) const
{
    const auto byte = static_cast<std::uint8_t>(text[0]);
    if (symbols_)
        return {symbol_to_unicode(*symbols_, byte), byte, 1};
    return page_->next(text);
}

glyph& realised_font::find(const text_character& c)
{
    glyph& g = c.bytes == 1 ? single_[c.code] : double_[c.code];
    if (!g.known)
        g = look_up(c);
    return g;
}

// Takes the glyph of a sign from the font's face, or from another that has it.
bool realised_font::set_glyph(glyph& g, char32_t sign) const
{
    const font_face* face = face_;
    if (sign != 0 && face->glyph_of(sign) == 0)
        face = find_face_with(sign, request_);
    if (sign == 0 || !face)
        return false;
    g.face = face;
    g.index = face->glyph_of(sign);
    return true;
}

glyph realised_font::look_up(const text_character& c) const
{
    glyph g;
    g.known = true;
    constexpr char32_t first_printable = 0x20;
    if (!usable() || (c.unicode < first_printable && !symbols_))
        return g;
    g.face = face_;
    if (face_->has_symbol_codes()) {
        g.index = face_->glyph_of_symbol(static_cast<std::uint8_t>(c.code & 0xFF));
    } else if (!set_glyph(g, c.unicode) && symbols_) {
        // A sign that no font has: one that looks like it, or else an empty box.
        constexpr char32_t box = 0x25AF;
        set_glyph(g, common_sign_like(c.unicode)) || set_glyph(g, box);
    }
    if (g.index == 0 && c.bytes == 2) {
        g.advance = rounded(em_ * stretch_); // East Asian signs are as wide as high
        return g;
    }
    g.advance = rounded(g.face->advance(g.index) * em_ * stretch_ / g.face->units_per_em());
    return g;
}

std::shared_ptr<realised_font> realise(const font_object& font, const font_scale& scale)
{
    struct kept_font {
        LOGFONTA logical;
        font_scale scale;
        std::shared_ptr<realised_font> font;
    };
    static thread_local std::list<kept_font> kept;
    static_assert(sizeof(LOGFONTA) == 60, "compared bytewise, so it has no padding");
    const auto known = std::ranges::find_if(kept, [&](const kept_font& k) {
        return k.scale == scale && std::memcmp(&k.logical, &font.logical, sizeof k.logical) == 0;
    });
    if (known != kept.end()) {
        kept.splice(kept.begin(), kept, known);
        return kept.front().font;
    }
    kept.push_front({font.logical, scale, std::make_shared<realised_font>(font.logical, scale)});
    if (kept.size() > fonts_kept)
        kept.pop_back();
    return kept.front().font;
}

namespace {

LOGFONTA stock_description(INT index)
{
    const auto make = [](LONG height, LONG weight, std::uint8_t charset, const char* face) {
        LOGFONTA logical{};
        logical.lfHeight = height;
        logical.lfWeight = weight;
        logical.lfCharSet = charset;
        std::strncpy(logical.lfFaceName, face, LF_FACESIZE - 1);
        return logical;
    };
    switch (index) {
    case OEM_FIXED_FONT:
        return make(12, FW_NORMAL, OEM_CHARSET, "Terminal");
    case ANSI_FIXED_FONT:
        return make(12, FW_NORMAL, ANSI_CHARSET, "Courier");
    case ANSI_VAR_FONT:
        return make(12, FW_NORMAL, ANSI_CHARSET, "MS Sans Serif");
    case SYSTEM_FIXED_FONT:
        return make(15, FW_NORMAL, ANSI_CHARSET, "Fixedsys");
    case DEFAULT_GUI_FONT:
        return make(-11, FW_NORMAL, ANSI_CHARSET, "MS Shell Dlg");
    default:
        return make(16, FW_BOLD, ANSI_CHARSET, "System");
    }
}

} // namespace

std::shared_ptr<font_object> make_stock_font(INT index)
{
    return std::make_shared<font_object>(stock_description(index));
}

} // namespace klv::gdi

namespace klv {

HFONT CreateFontIndirectA(const LOGFONTA* description) noexcept
{
    if (!description)
        return nullptr;
    LOGFONTA logical = *description;
    // What follows the name's end must not tell two equal fonts apart.
    const std::size_t name_length = strnlen(logical.lfFaceName, LF_FACESIZE - 1);
    std::fill(logical.lfFaceName + name_length, logical.lfFaceName + LF_FACESIZE, '\0');
    return gdi::guarded([&] { return gdi::make_object<HFONT, gdi::font_object>(logical); });
}

} // namespace klv
