#include "klv/filters/windows/text_measurer.h"

#include "klv/base/angles.h"
#include "klv/gdi/gdi.h"
#include "klv/gdi/text/font_charset.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace klv {
namespace {

// Fonts are measured at this character height and scaled, so that hinting and rounding do not show.
constexpr int measured_em = 1024;

// A device realises a character height of h as h * 72 / 96 * 1.3 of its own units (see
// vDEVICE::ActivateFont).
constexpr double realised_part_of_height = 72.0 / 96.0 * 1.3;

// File widths are whole units: what differs less from the face's own width means that width.
constexpr double smallest_expansion = 0.03;

constexpr std::uint16_t horizontal_mask = TA_CENTER;
constexpr std::uint16_t vertical_mask = TA_BASELINE;

bool same_face(const canvas_font& a, const canvas_font& b)
{
    return a.face == b.face && a.bold == b.bold && a.italic == b.italic && a.charset == b.charset;
}

int rounded(double v)
{
    constexpr double limit = 1 << 30;
    return static_cast<int>(std::lround(std::clamp(v, -limit, limit)));
}

} // namespace

double text_measures::width(std::string_view text) const
{
    double sum = 0;
    for (const char c : text)
        sum += advance[static_cast<unsigned char>(c)];
    return sum;
}

text_measurer::~text_measurer()
{
    if (dc_)
        DeleteDC(dc_);
    if (font_)
        DeleteObject(font_);
}

void text_measurer::load(const canvas_font& font)
{
    if (!dc_)
        dc_ = CreateCompatibleDC(nullptr);
    const vFONTSPEC spec = measured_font(font, measured_em, 1);
    LOGFONTA description{};
    description.lfHeight = -measured_em;
    description.lfWeight = font.bold ? FW_BOLD : FW_NORMAL;
    description.lfItalic = font.italic;
    const auto face = spec.Name().View().substr(0, LF_FACESIZE - 1);
    std::copy(face.begin(), face.end(), description.lfFaceName);

    const HFONT made = CreateFontIndirectA(&description);
    SelectObject(dc_, made);
    if (font_)
        DeleteObject(font_);
    font_ = made;

    TEXTMETRICA metrics{};
    GetTextMetricsA(dc_, &metrics);
    std::array<std::int32_t, 256> widths{};
    GetCharWidth32A(dc_, 0, 255, widths.data());
    unit_.em = 1;
    unit_.ascent = static_cast<double>(metrics.tmAscent) / measured_em;
    unit_.descent = static_cast<double>(metrics.tmDescent) / measured_em;
    std::transform(widths.begin(), widths.end(), unit_.advance.begin(),
        [](std::int32_t w) { return static_cast<double>(w) / measured_em; });
    cell_ = std::max(unit_.ascent + unit_.descent, 0.1);
    loaded_ = font;
    is_loaded_ = true;
    average_ = static_cast<double>(metrics.tmAveCharWidth) / measured_em;
    measured_ = {};
}

const text_measures& text_measurer::measure(const canvas_font& font, const text_size& size)
{
    if (!is_loaded_ || !same_face(font, loaded_))
        load(font);
    if (size == measured_ && size.height != 0)
        return scaled_;
    measured_ = size;
    const double em = size.height < 0 ? -static_cast<double>(size.height) : size.height / cell_;
    const double natural = average_ * em;
    scaled_.em = em;
    scaled_.expansion = size.width != 0 && natural > 0 ? std::abs(size.width / natural) : 1;
    if (std::abs(scaled_.expansion - 1) < smallest_expansion)
        scaled_.expansion = 1;
    scaled_.ascent = unit_.ascent * em;
    scaled_.descent = unit_.descent * em;
    std::transform(unit_.advance.begin(), unit_.advance.end(), scaled_.advance.begin(),
        [this, em](double w) { return w * em * scaled_.expansion; });
    return scaled_;
}

vFONTSPEC measured_font(const canvas_font& font, double em, double expansion)
{
    const auto style = static_cast<vFONTSTYLE>(
        (font.bold ? vFONT_BOLD : vFONT_NORMAL) | (font.italic ? vFONT_ITALIC : vFONT_NORMAL));
    const int height = std::max(1, rounded(em / realised_part_of_height));
    const std::string face = face_name_with_charset(font.face.View(), font.charset);
    const vREAL stretch = expansion != 1 ? vREAL(std::min(expansion, 100.0)) : vREAL();
    return vFONTSPEC(vSTRING(std::string_view(face)), style, height, stretch, 100, vFONT_CHARACTER_HEIGHT,
        vANGLE(font.escapement / 10.0));
}

vPOINT along_baseline(const vPOINT& start, int escapement, double distance)
{
    const double angle = tenths_to_radians(escapement);
    return {rounded(start.x + distance * std::cos(angle)), rounded(start.y - distance * std::sin(angle))};
}

vPOINT baseline_start(
    const vPOINT& reference, std::uint16_t align, int escapement, const text_measures& measures, double width)
{
    double back = 0;
    switch (align & horizontal_mask) {
    case TA_RIGHT:
        back = width;
        break;
    case TA_CENTER:
        back = width / 2;
        break;
    default:
        break;
    }
    double down = measures.ascent;
    switch (align & vertical_mask) {
    case TA_BASELINE:
        down = 0;
        break;
    case TA_BOTTOM:
        down = -measures.descent;
        break;
    default:
        break;
    }
    const double angle = tenths_to_radians(escapement);
    return {rounded(reference.x - back * std::cos(angle) + down * std::sin(angle)),
        rounded(reference.y + back * std::sin(angle) + down * std::cos(angle))};
}

} // namespace klv
