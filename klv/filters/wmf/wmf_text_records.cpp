#include "klv/filters/wmf/wmf_attributes.h"
#include "klv/filters/wmf/wmf_reader.h"
#include "klv/gdi/gdi.h"
#include "klv/metafiles/metafile.h"

#include <algorithm>
#include <cmath>

// Text records of a Windows Metafile.

namespace klv {
namespace {

constexpr std::size_t longest_text = 1000;

// Where the font at hand runs about as wide as the file's spacing says, the spacing only differs by the
// rounding of the program that wrote it: words are moved to their places, and a single character only when it
// is far off. In any other font each character that is off goes to its place. Parts of the font's height.
constexpr double same_width = 0.06;
constexpr double drift_of_word = 0.04;
constexpr double drift_of_far_character = 0.35;
constexpr double drift_of_character = 0.08;

std::size_t padded(std::size_t count) { return count + count % 2; }

// The characters of a text field of count bytes, up to a zero byte; the reader passes over the padded field.
std::string_view read_characters(byte_reader& in, std::size_t count)
{
    const auto field = in.bytes(std::min(padded(count), in.left()));
    const auto kept = field.first(std::min({field.size(), count, longest_text}));
    const auto end = std::find(kept.begin(), kept.end(), std::uint8_t{0});
    return {reinterpret_cast<const char*>(kept.data()), static_cast<std::size_t>(end - kept.begin())};
}

// Their spacing is by bytes, and a run may not begin inside a character.
bool is_double_byte(std::uint8_t charset)
{
    return charset == SHIFTJIS_CHARSET || charset == HANGUL_CHARSET || charset == JOHAB_CHARSET
        || charset == GB2312_CHARSET || charset == CHINESEBIG5_CHARSET;
}

} // namespace

bool wmf_reader::handle_text(const wmf_record& record, byte_reader& in)
{
    switch (record.function) {
    case wmf_function::text_out:
        text_out(in);
        return true;
    case wmf_function::ext_text_out:
        ext_text_out(in);
        return true;
    case wmf_function::draw_text:
        draw_text(in);
        return true;
    default:
        return false;
    }
}

void wmf_reader::text_out(byte_reader& in)
{
    const std::size_t count = in.u16le();
    const auto characters = read_characters(in, count);
    wmf_pair at;
    if (wmf_read(in, at))
        text(characters, map(at.x, at.y), {});
}

void wmf_reader::ext_text_out(byte_reader& in)
{
    wmf_pair at;
    wmf_read(in, at);
    const std::size_t count = in.u16le();
    const std::uint16_t options = in.u16le();
    const bool has_rect = faithful_ ? (options & (ETO_OPAQUE | ETO_CLIPPED)) != 0 : options != 0;
    if (has_rect) {
        const auto left = in.i16le();
        const auto top = in.i16le();
        const auto right = in.i16le();
        const auto bottom = in.i16le();
        if (faithful_ && (options & ETO_OPAQUE) != 0 && in.ok()) {
            fill_plainly(
                vRECT(map(left, top), map(right, bottom)), wmf_solid_fill(wmf_colour(state_.background)));
        }
    }
    const auto characters = read_characters(in, count);
    if (in.ok())
        text(characters, map(at.x, at.y), in.rest());
}

// The rectangle is in the order in which the library's own writer puts it.
void wmf_reader::draw_text(byte_reader& in)
{
    in.skip(2);
    const std::size_t count = in.u16le();
    const auto left = in.i16le();
    const auto top = in.i16le();
    in.skip(4);
    const auto characters = read_characters(in, count);
    if (in.ok())
        text(characters, map(left, top), {});
}

// \param spacing the distances between characters, 16 bits each, when the record has them
void wmf_reader::text(std::string_view characters, const vPOINT& point, std::span<const std::uint8_t> spacing)
{
    if (characters.empty())
        return;
    record_clip();
    picture_.PushFillSpec();
    picture_.FillSpec(wmf_solid_fill(wmf_colour(state_.text_colour)));
    if (faithful_ && state_.font)
        faithful_text(characters, point, spacing);
    else
        text_run(characters, point);
    picture_.PopFillSpec();
}

void wmf_reader::text_run(std::string_view characters, const vPOINT& baseline)
{
    if (!characters.empty())
        picture_.DrawTextOnLine(vSTRING(characters), baseline, nullptr);
}

// Places the text by its alignment and, where the font at hand runs differently, by the file's spacing.
void wmf_reader::faithful_text(
    std::string_view characters, vPOINT point, std::span<const std::uint8_t> spacing)
{
    const auto& font = *state_.font;
    const auto& measures = measurer_.measure(font, text_size(font));
    const bool spaced = spacing.size() / 2 >= characters.size();
    byte_reader distances(spacing);
    double width = 0;
    if (spaced)
        for (std::size_t i = 0; i < characters.size(); ++i)
            width += state_.mapping.map_width(distances.i16le());
    else
        width = measures.width(characters);
    width = std::abs(width);

    if (state_.text_align & TA_UPDATECP)
        point = state_.current_point;
    const vPOINT start = baseline_start(point, state_.text_align, font.escapement, measures, width);
    if (state_.text_align & TA_UPDATECP)
        state_.current_point = along_baseline(point, font.escapement, width);

    if (spaced && !is_double_byte(font.charset))
        spaced_text(characters, spacing, start, measures,
            std::abs(width / measures.width(characters) - 1) < same_width);
    else
        text_run(characters, start);
}

void wmf_reader::spaced_text(std::string_view characters, std::span<const std::uint8_t> spacing,
    const vPOINT& start, const wmf_text_measures& measures, bool font_fits)
{
    const int escapement = state_.font->escapement;
    byte_reader distances(spacing);
    std::size_t run = 0;
    double run_at = 0;
    double meant = 0;
    double natural = 0;
    for (std::size_t i = 0; i < characters.size(); ++i) {
        const bool starts_word = i > 0 && characters[i - 1] == ' ' && characters[i] != ' ';
        const double tolerated = !font_fits ? drift_of_character
            : starts_word                   ? drift_of_word
                                            : drift_of_far_character;
        if (std::abs(meant - natural) > tolerated * measures.em) {
            text_run(characters.substr(run, i - run), along_baseline(start, escapement, run_at));
            run = i;
            run_at = natural = meant;
        }
        meant += std::abs(state_.mapping.map_width(distances.i16le()));
        natural += measures.advance[static_cast<unsigned char>(characters[i])];
    }
    text_run(characters.substr(run), along_baseline(start, escapement, run_at));
}

} // namespace klv
