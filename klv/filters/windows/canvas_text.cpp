#include "klv/filters/windows/canvas_text.h"

#include "klv/filters/windows/windows_attributes.h"
#include "klv/gdi/gdi.h"
#include "klv/gdi/text/font_charset.h"
#include "klv/metafiles/metafile.h"

#include <cmath>

namespace klv {
namespace {

// Where the font at hand runs about as wide as the file's advances say, those only differ by the rounding of
// the program that wrote them: words are moved to their places, and a single character only when it is far
// off. In any other font each character that is off goes to its place. Parts of the font's height.
constexpr double same_width = 0.06;
constexpr double drift_of_word = 0.04;
constexpr double drift_of_far_character = 0.35;
constexpr double drift_of_character = 0.08;

// Their advances are by bytes, and a run may not begin inside a character.
bool is_double_byte(std::uint8_t charset)
{
    return charset == SHIFTJIS_CHARSET || charset == HANGUL_CHARSET || charset == JOHAB_CHARSET
        || charset == GB2312_CHARSET || charset == CHINESEBIG5_CHARSET;
}

// The byte of a character set that means the character.
char byte_of(const gdi::code_page& page, char16_t character)
{
    constexpr int bytes = 256;
    for (int byte = 0; byte < bytes; ++byte)
        if (page.unicode(static_cast<std::uint8_t>(byte)) == character)
            return static_cast<char>(byte);
    return '?';
}

} // namespace

/// Text with the place of its first character's baseline.
struct canvas_text::placed_run {
    std::string_view characters;
    vPOINT start;
    int escapement;
    const text_measures& measures;
};

void canvas_text::draw(std::string_view characters, const POINT& at, std::span<const std::int32_t> advances)
{
    if (characters.empty())
        return;
    core_.record_clip();
    core_.picture.PushFillSpec();
    core_.picture.FillSpec(solid_fill(colour_of(core_.state.text_colour)));
    if (core_.policy.measures_text && core_.state.font)
        draw_measured(characters, core_.map(at.x, at.y), advances);
    else
        draw_run(characters, core_.map(at.x, at.y));
    core_.picture.PopFillSpec();
}

void canvas_text::draw(
    std::u16string_view characters, const POINT& at, std::span<const std::int32_t> advances)
{
    const std::uint8_t charset = core_.state.font ? core_.state.font->charset : std::uint8_t{ANSI_CHARSET};
    const auto& page = gdi::code_page::of_charset(charset);
    bytes_.clear();
    for (const char16_t character : characters)
        bytes_.push_back(character < 0x80 ? static_cast<char>(character) : byte_of(page, character));
    draw(std::string_view(bytes_), at, advances);
}

void canvas_text::draw_run(std::string_view characters, const vPOINT& baseline)
{
    if (!characters.empty())
        core_.picture.DrawTextOnLine(vSTRING(characters), baseline, nullptr);
}

// Places the text by its alignment and, where the font at hand runs differently, by the file's advances.
void canvas_text::draw_measured(
    std::string_view characters, vPOINT point, std::span<const std::int32_t> advances)
{
    auto& state = core_.state;
    const auto& font = *state.font;
    const auto& measures = core_.measurer.measure(font, attributes_.size_of(font));
    const bool spaced = advances.size() >= characters.size();
    double width = 0;
    if (spaced)
        for (const std::int32_t advance : advances.first(characters.size()))
            width += state.mapping.map_width(advance);
    else
        width = measures.width(characters);
    width = std::abs(width);

    const bool from_current_point = (state.text_align & TA_UPDATECP) != 0;
    if (from_current_point)
        point = state.current_point;
    const vPOINT start = baseline_start(point, state.text_align, font.escapement, measures, width);
    if (from_current_point)
        state.current_point = along_baseline(point, font.escapement, width);

    if (spaced && !is_double_byte(font.charset))
        draw_runs({characters, start, font.escapement, measures}, advances,
            std::abs(width / measures.width(characters) - 1) < same_width);
    else
        draw_run(characters, start);
}

void canvas_text::draw_runs(const placed_run& text, std::span<const std::int32_t> advances, bool font_fits)
{
    const auto& characters = text.characters;
    std::size_t run = 0;
    double run_at = 0;
    double meant = 0;
    double natural = 0;
    for (std::size_t i = 0; i < characters.size(); ++i) {
        const bool starts_word = i > 0 && characters[i - 1] == ' ' && characters[i] != ' ';
        const double tolerated = !font_fits ? drift_of_character
            : starts_word                   ? drift_of_word
                                            : drift_of_far_character;
        if (std::abs(meant - natural) > tolerated * text.measures.em) {
            draw_run(characters.substr(run, i - run), along_baseline(text.start, text.escapement, run_at));
            run = i;
            run_at = natural = meant;
        }
        meant += std::abs(core_.state.mapping.map_width(advances[i]));
        natural += text.measures.advance[static_cast<unsigned char>(characters[i])];
    }
    draw_run(characters.substr(run), along_baseline(text.start, text.escapement, run_at));
}

} // namespace klv
