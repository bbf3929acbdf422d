#include "klv/core/integer_math.h"
#include "klv/devices/device.h"
#include "klv/devices/font_detail.h"
#include "klv/gdi/gdi.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <utility>

/// The current font of a device: its stack, and its realisation in the device's context.
namespace klv {
namespace {

constexpr int points_per_inch = 72;
// Realised heights are those of a device of this many units an inch.
constexpr int reference_units_per_inch = 96;
// What turns a character height in points into one in pixels at 96 an inch, cut to tenths.
constexpr double pixels_per_point = 1.3;
// A raw 16.16 angle in degrees over this is the angle in tenths of a degree.
constexpr int raw_angle_per_tenth = 6554;

const vFONTSPEC& default_font()
{
    static const vFONTSPEC font(
        vSTRING("Arial"), vFONT_BOLD, 8, vREAL(), 0, vFONT_CHARACTER_HEIGHT, vANGLE());
    return font;
}

LOGFONTA describe(const vFONTSPEC& spec, LONG height, bool upright)
{
    LOGFONTA description{};
    const auto style = static_cast<unsigned>(spec.Style());
    description.lfHeight = height;
    description.lfEscapement = upright ? 0 : spec.Angle()() / raw_angle_per_tenth;
    description.lfOrientation = description.lfEscapement;
    description.lfWeight = style & vFONT_BOLD ? FW_BOLD : FW_NORMAL;
    description.lfItalic = style & vFONT_ITALIC ? 1 : 0;
    const auto name = spec.Name().View().substr(0, LF_FACESIZE - 1);
    std::memcpy(description.lfFaceName, name.data(), name.size());
    return description;
}

// The average width of a description's font, which is as wide as it comes, in units of its height.
double natural_width(HDC dc, LOGFONTA description)
{
    constexpr LONG measured_height = 1024;
    description.lfHeight = description.lfHeight < 0 ? -measured_height : measured_height;
    description.lfEscapement = description.lfOrientation = 0;
    const HFONT measured = CreateFontIndirectA(&description);
    const HGDIOBJ selected = SelectObject(dc, measured);
    TEXTMETRICA metrics{};
    GetTextMetricsA(dc, &metrics);
    SelectObject(dc, selected);
    DeleteObject(measured);
    return static_cast<double>(metrics.tmAveCharWidth) / measured_height;
}

// An expansion of 0 leaves the font as it comes, like one of 1.
HFONT create_font(HDC dc, const vFONTSPEC& spec, LONG height, bool upright)
{
    LOGFONTA description = describe(spec, height, upright);
    const double expansion = spec.Expansion().Double();
    if (expansion > 0 && expansion != 1) {
        const double width = natural_width(dc, description) * std::abs(height) * expansion;
        description.lfWidth = static_cast<LONG>(std::clamp(std::round(width), 1.0, double{INT16_MAX}));
    }
    return CreateFontIndirectA(&description);
}

} // namespace

int vFONTSPEC::PointSize(vDEVICE& device) const noexcept
{
    const int points = MulDiv(height_, points_per_inch, device.LogUnitsPerVertInch());
    return points < 0 ? static_cast<int>(std::max(points * pixels_per_point, double{INT32_MIN})) : points;
}

LONG realised_font_height(const vFONTSPEC& spec, vDEVICE& device) noexcept
{
    const auto height
        = static_cast<std::int16_t>(static_cast<std::uint16_t>(spec.PointSize(device) & 0xFFFF));
    const double ratio = device.GetFontRatio()() != 0 ? device.GetFontRatio().Double() : 1;
    const double scale = std::abs(ratio) * device.DevUnitsPerVertInch() / reference_units_per_inch;
    const double scaled = std::clamp(height * scale, double{INT16_MIN}, double{INT16_MAX});
    if (height == 0)
        return 0;
    // Height 0 would stand for a default: the smallest text keeps a pixel.
    return static_cast<LONG>(
        height < 0 ? std::min(std::round(scaled), -1.0) : std::max(std::round(scaled), 1.0));
}

// ---- The current font ----------------------------------------------------------------------------------

void vDEVICE::SelectDefaultFont() noexcept { vDEVICE::FontSpec(default_font()); }

void vDEVICE::FreeFonts() noexcept
{
    if (dc_ && current_font_ && GetCurrentObject(dc_, OBJ_FONT) == current_font_->Font())
        SelectObject(dc_, GetStockObject(SYSTEM_FONT));
    current_font_ = nullptr;
    font_details_.reset();
    fonts_.reset();
}

void vDEVICE::FontSpec(const vFONTSPEC& spec) noexcept
{
    if (current_font_ && *current_font_ == spec)
        return;
    if (!font_details_)
        font_details_.reset(new font_list);
    vFONTDETAIL* detail = font_details_ ? font_details_->use(spec, *this) : nullptr;
    if (detail)
        current_font_ = detail;
}

const vFONTSPEC& vDEVICE::FontSpec() const noexcept
{
    return current_font_ ? static_cast<const vFONTSPEC&>(*current_font_) : default_font();
}

void vDEVICE::PushFontSpec() noexcept
{
    try {
        font_stack_.push_back(FontSpec());
    } catch (const std::bad_alloc&) {
        // Left as it was; the matching pop brings back an outer font.
    }
}

void vDEVICE::PopFontSpec() noexcept
{
    if (font_stack_.empty()) {
        FontSpec(default_font());
        return;
    }
    const vFONTSPEC spec = std::move(font_stack_.back());
    font_stack_.pop_back();
    FontSpec(spec);
}

vFONTDETAIL* vDEVICE::GetCurFontDetail() noexcept { return current_font_; }

// ---- Realisation ---------------------------------------------------------------------------------------

HFONT vDEVICE::ActivateFont(int rotated) noexcept
{
    const active_dc dc(*this);
    if (!dc || !current_font_)
        return nullptr;
    const LONG height = realised_font_height(*current_font_, *this);
    const auto select = [&](bool upright) {
        if (!current_font_->Font() || current_font_->FontHeight() != height || upright)
            current_font_->Font(create_font(dc, *current_font_, height, upright), height);
        if (GetCurrentObject(dc, OBJ_FONT) != current_font_->Font()) {
            ClearFont();
            SelectObject(dc, current_font_->Font());
        }
        log_font_height_ = GetLogFontHeight();
    };
    select(false);
    TEXTMETRICA metrics{};
    if (!current_font_->Font() || !GetTextMetricsA(dc, &metrics))
        return nullptr;
    if (!rotated || metrics.tmPitchAndFamily & TMPF_TRUETYPE)
        return current_font_->Font();
    select(true);
    return nullptr;
}

void vDEVICE::ClearFont() noexcept
{
    const active_dc dc(*this);
    const HGDIOBJ replaced = SelectObject(dc, GetStockObject(SYSTEM_FONT));
    if (replaced && current_font_ && replaced == current_font_->Font())
        current_font_->Font(nullptr, 0);
}

int vDEVICE::GetLogFontHeight() noexcept
{
    const active_dc dc(*this);
    TEXTMETRICA metrics{};
    return GetTextMetricsA(dc, &metrics) ? DVtoLV(metrics.tmHeight) : 0;
}

} // namespace klv
