#include "klv/gdi/gdi.h"
#include "klv/gdi/state/context.h"
#include "klv/gdi/text/font_charset.h"
#include "klv/gdi/text/font_face.h"
#include "klv/gdi/text/symbol_tables.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <mutex>
#include <string>

#include <fontconfig/fontconfig.h>

namespace klv::gdi {
namespace {

struct installed_style {
    std::string style;
    std::int32_t weight = FW_NORMAL;
    bool italic = false;
    bool fixed = false;
    bool symbol = false;
};
/// Families in alphabetical order, letter case ignored; the styles of each by weight, upright first.
struct less_ignoring_case {
    bool operator()(const std::string& a, const std::string& b) const
    {
        return strcasecmp(a.c_str(), b.c_str()) < 0;
    }
};
using installed_families = std::map<std::string, std::vector<installed_style>, less_ignoring_case>;

std::string text_property(FcPattern* font, const char* property)
{
    FcChar8* text = nullptr;
    return FcPatternGetString(font, property, 0, &text) == FcResultMatch ? reinterpret_cast<const char*>(text)
                                                                         : std::string();
}

int number_property(FcPattern* font, const char* property, int otherwise)
{
    int value = otherwise;
    return FcPatternGetInteger(font, property, 0, &value) == FcResultMatch ? value : otherwise;
}

installed_style style_of(FcPattern* font)
{
    installed_style style;
    style.style = text_property(font, FC_STYLE);
    style.weight = FcWeightToOpenType(number_property(font, FC_WEIGHT, FC_WEIGHT_REGULAR));
    style.italic = number_property(font, FC_SLANT, FC_SLANT_ROMAN) != FC_SLANT_ROMAN;
    style.fixed = number_property(font, FC_SPACING, FC_PROPORTIONAL) >= FC_MONO;
    FcBool symbol = FcFalse;
    style.symbol = FcPatternGetBool(font, FC_SYMBOL, 0, &symbol) == FcResultMatch && symbol != FcFalse;
    return style;
}

const installed_families& all_families()
{
    static const installed_families families = [] {
        installed_families found;
        const std::lock_guard lock(fontconfig_mutex());
        const FcFontSet* fonts = FcConfigGetFonts(nullptr, FcSetSystem);
        for (int i = 0; fonts && i < fonts->nfont; ++i) {
            FcBool scalable = FcFalse;
            FcPatternGetBool(fonts->fonts[i], FC_SCALABLE, 0, &scalable);
            if (scalable)
                found[text_property(fonts->fonts[i], FC_FAMILY)].push_back(style_of(fonts->fonts[i]));
        }
        for (auto& [family, styles] : found)
            std::ranges::stable_sort(styles, {}, [](const installed_style& s) {
                return std::tuple(std::abs(s.weight - FW_NORMAL), s.italic);
            });
        return found;
    }();
    return families;
}

LOGFONTA describe(const std::string& family, const installed_style& style, std::int32_t height)
{
    LOGFONTA font{};
    font.lfHeight = height;
    font.lfWeight = style.weight;
    font.lfItalic = style.italic;
    font.lfCharSet = style.symbol || symbol_set_of_face(family) ? SYMBOL_CHARSET : ANSI_CHARSET;
    font.lfPitchAndFamily = static_cast<std::uint8_t>(
        (style.fixed ? FIXED_PITCH | FF_MODERN : VARIABLE_PITCH | FF_DONTCARE) & 0xFF);
    std::strncpy(font.lfFaceName, family.c_str(), LF_FACESIZE - 1);
    return font;
}

// The measures that enumeration reports are those of a font of this height.
constexpr std::int32_t enumerated_height = 32;

class enumeration {
public:
    enumeration(const drawing_context& dc, FONTENUMPROCA callback, LPARAM data)
        : dc_(dc)
        , callback_(callback)
        , data_(data)
    {
    }

    /// \return false when the callback wants no more
    bool report(const std::string& family, const installed_style& style)
    {
        ENUMLOGFONTA font{};
        font.elfLogFont = describe(family, style, enumerated_height);
        copy_name(family, font.elfFullName);
        copy_name(style.style, font.elfStyle);
        NEWTEXTMETRICA metrics{};
        metrics.tmHeight = enumerated_height;
        metrics.tmWeight = style.weight;
        metrics.tmItalic = style.italic;
        metrics.tmDigitizedAspectX = dc_.out->dots_per_inch();
        metrics.tmDigitizedAspectY = dc_.out->dots_per_inch();
        metrics.tmPitchAndFamily
            = static_cast<BYTE>(TMPF_TRUETYPE | TMPF_VECTOR | (style.fixed ? 0 : TMPF_FIXED_PITCH));
        metrics.tmCharSet = font.elfLogFont.lfCharSet;
        answer_ = callback_(&font.elfLogFont, &metrics, TRUETYPE_FONTTYPE, data_);
        return answer_ != 0;
    }
    [[nodiscard]] int answer() const { return answer_; }

private:
    template <std::size_t N> static void copy_name(const std::string& from, BYTE (&to)[N])
    {
        std::memcpy(to, from.data(), std::min(from.size(), N - 1));
    }

    const drawing_context& dc_;
    FONTENUMPROCA callback_;
    LPARAM data_;
    int answer_ = 1;
};

// Calls report for the first style of each family, or for every style of one. Families beyond the limit of
// a face name can't be asked for and are left out.
void enumerate(enumeration& to, const char* family)
{
    const bool one = family && family[0] != '\0';
    for (const auto& [name, styles] : all_families()) {
        if (name.size() >= LF_FACESIZE || (one && strcasecmp(name.c_str(), family) != 0))
            continue;
        const std::size_t count = one ? styles.size() : 1;
        for (std::size_t i = 0; i < count; ++i)
            if (!to.report(name, styles[i]))
                return;
    }
}

} // namespace
} // namespace klv::gdi

namespace klv {

int EnumFontFamiliesA(HDC dc, const char* family, FONTENUMPROCA callback, LPARAM data) noexcept
{
    return gdi::guarded([&] {
        const auto* context = gdi::find_context(dc);
        if (!context || !callback)
            return 0;
        gdi::enumeration to(*context, callback, data);
        gdi::enumerate(to, family);
        return to.answer();
    });
}

} // namespace klv
