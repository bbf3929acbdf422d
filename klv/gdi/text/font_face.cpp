#include "klv/gdi/text/font_face.h"

#include "klv/gdi/text.h"
#include "klv/gdi/text/font_names.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

#include <fontconfig/fontconfig.h>
#include FT_TRUETYPE_TABLES_H

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
// Fontconfig keeps its configuration to the end behind encoded pointers, which look like lost ones; freeing
// it (FcFini) is for a program to decide, not for a library in it.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig"; }
#endif
#endif

namespace klv::gdi {
namespace {

struct pattern_deleter {
    void operator()(FcPattern* pattern) const { FcPatternDestroy(pattern); }
};
using pattern_ptr = std::unique_ptr<FcPattern, pattern_deleter>;

const FcChar8* fc(const char* text) { return reinterpret_cast<const FcChar8*>(text); }

// A match takes a fraction of a millisecond; a file that names thousands of families gets the general
// ones after this many.
constexpr std::size_t max_families_looked_up = 400;

constexpr const char* sans_family = "Arial";
constexpr const char* serif_family = "Times New Roman";
constexpr const char* fixed_family = "Courier New";

// What kind of face a name stands for, as far as the configuration of the system's fonts knows it.
const char* family_by_name(const std::string& name)
{
    const pattern_ptr pattern(FcPatternCreate());
    if (!pattern)
        return sans_family;
    FcPatternAddString(pattern.get(), FC_FAMILY, fc(name.c_str()));
    FcConfigSubstitute(nullptr, pattern.get(), FcMatchPattern);
    FcChar8* family = nullptr;
    for (int i = 0; FcPatternGetString(pattern.get(), FC_FAMILY, i, &family) == FcResultMatch; ++i) {
        const std::string_view kind = reinterpret_cast<const char*>(family);
        if (kind == "sans-serif")
            return sans_family;
        if (kind == "serif")
            return serif_family;
        if (kind == "monospace")
            return fixed_family;
    }
    return sans_family;
}

// The family to take where a face is not installed and has no metric-compatible one.
const char* substitute_family(const face_request& request)
{
    if (const char* similar = similar_family(request.family))
        return similar;
    const auto kind = static_cast<std::uint8_t>(request.pitch_and_family & 0xF0);
    if (kind == FF_MODERN || (request.pitch_and_family & 0x03) == FIXED_PITCH)
        return fixed_family;
    if (kind == FF_ROMAN)
        return serif_family;
    return kind == FF_SWISS ? sans_family : family_by_name(request.family);
}

pattern_ptr make_pattern(const face_request& request)
{
    pattern_ptr pattern(FcPatternCreate());
    if (!pattern)
        return nullptr;
    const int slant = request.italic ? FC_SLANT_ITALIC : FC_SLANT_ROMAN;
    const int weight
        = FcWeightFromOpenType(std::clamp<int>(request.weight > 0 ? request.weight : 400, 100, 900));
    if (!request.family.empty())
        FcPatternAddString(pattern.get(), FC_FAMILY, fc(request.family.c_str()));
    FcPatternAddString(pattern.get(), FC_FAMILY, fc(substitute_family(request)));
    FcPatternAddInteger(pattern.get(), FC_SLANT, slant);
    FcPatternAddInteger(pattern.get(), FC_WEIGHT, weight);
    FcPatternAddBool(pattern.get(), FC_SCALABLE, FcTrue);
    FcPatternAddBool(pattern.get(), FC_OUTLINE, FcTrue);
    FcPatternAddBool(pattern.get(), FC_COLOR, FcFalse);
    return pattern;
}

struct face_file {
    std::string path;
    int index = 0;
    friend auto operator<=>(const face_file&, const face_file&) = default;
};

std::optional<face_file> best_match(FcPattern& pattern)
{
    FcConfigSubstitute(nullptr, &pattern, FcMatchPattern);
    FcDefaultSubstitute(&pattern);
    FcResult result{};
    const pattern_ptr match(FcFontMatch(nullptr, &pattern, &result));
    FcChar8* path = nullptr;
    int index = 0;
    if (!match || FcPatternGetString(match.get(), FC_FILE, 0, &path) != FcResultMatch)
        return std::nullopt;
    FcPatternGetInteger(match.get(), FC_INDEX, 0, &index);
    return face_file{reinterpret_cast<const char*>(path), index};
}

// Weight and slant decide among the faces that have a sign.
using face_style = std::pair<bool, bool>;

face_style style_of(const face_request& request) { return {request.weight >= FW_SEMIBOLD, request.italic}; }

// Whether any installed font has a sign; much faster than a match that finds none.
bool is_installed(char32_t sign)
{
    const FcFontSet* fonts = FcConfigGetFonts(nullptr, FcSetSystem);
    for (int i = 0; fonts && i < fonts->nfont; ++i) {
        FcCharSet* signs = nullptr;
        if (FcPatternGetCharSet(fonts->fonts[i], FC_CHARSET, 0, &signs) == FcResultMatch
            && FcCharSetHasChar(signs, sign))
            return true;
    }
    return false;
}

std::optional<face_file> match_file(const face_request& request)
{
    const pattern_ptr pattern = make_pattern(request);
    return pattern ? best_match(*pattern) : std::nullopt;
}

std::optional<face_file> match_file_with(char32_t sign, const face_request& request)
{
    const pattern_ptr pattern = is_installed(sign) ? make_pattern(request) : nullptr;
    if (!pattern)
        return std::nullopt;
    FcCharSet* signs = FcCharSetCreate();
    if (!signs)
        return std::nullopt;
    FcCharSetAddChar(signs, sign);
    FcPatternAddCharSet(pattern.get(), FC_CHARSET, signs);
    FcCharSetDestroy(signs);
    return best_match(*pattern);
}

// Which file shows a face, looked up once for all threads.
class font_directory {
public:
    std::optional<face_file> file_of(const face_request& request)
    {
        const std::lock_guard lock(fontconfig_mutex());
        const auto known = files_.find(request);
        if (known != files_.end())
            return known->second;
        if (files_.size() < max_families_looked_up)
            return files_[request] = match_file(request);
        face_request general = request;
        general.family = sans_family;
        const auto substitute = files_.find(general);
        return substitute != files_.end() ? substitute->second : files_.begin()->second;
    }

    std::optional<face_file> file_with(char32_t sign, const face_request& request)
    {
        const std::lock_guard lock(fontconfig_mutex());
        const auto [entry, is_new] = files_with_.try_emplace({sign, style_of(request)});
        if (is_new)
            entry->second = match_file_with(sign, request);
        return entry->second;
    }

    static font_directory& instance()
    {
        static font_directory directory;
        return directory;
    }

private:
    std::map<face_request, std::optional<face_file>> files_;
    std::map<std::pair<char32_t, face_style>, std::optional<face_file>> files_with_;
};

// The faces that a thread has opened.
class thread_faces {
public:
    thread_faces()
    {
        FT_Library made = nullptr;
        if (FT_Init_FreeType(&made) == 0)
            library_.reset(made);
    }

    [[nodiscard]] FT_Library library() const { return library_.get(); }

    const font_face* find(const face_request& request)
    {
        if (const auto known = found_.find(request); known != found_.end())
            return known->second;
        const font_face* face = open(font_directory::instance().file_of(request));
        if (found_.size() < max_families_looked_up)
            found_[request] = face;
        return face;
    }

    const font_face* find_with(char32_t sign, const face_request& request)
    {
        const auto [entry, is_new] = found_with_.try_emplace({sign, style_of(request)});
        if (is_new) {
            const font_face* face = open(font_directory::instance().file_with(sign, request));
            entry->second = face && face->glyph_of(sign) != 0 ? face : nullptr;
        }
        return entry->second;
    }

    static thread_faces& instance()
    {
        static thread_local thread_faces faces;
        return faces;
    }

private:
    // A file that can't be opened is remembered as such.
    const font_face* open(const std::optional<face_file>& file)
    {
        if (!file)
            return nullptr;
        const auto [entry, is_new] = opened_.try_emplace(*file);
        FT_Face face = nullptr;
        if (is_new && library_ && FT_New_Face(library(), file->path.c_str(), file->index, &face) == 0)
            entry->second = std::make_unique<font_face>(face);
        return entry->second.get();
    }

    struct library_deleter {
        void operator()(FT_Library library) const { FT_Done_FreeType(library); }
    };
    std::unique_ptr<FT_LibraryRec_, library_deleter> library_; // outlives the faces
    std::map<face_file, std::unique_ptr<font_face>> opened_;
    std::map<face_request, const font_face*> found_;
    std::map<std::pair<char32_t, face_style>, const font_face*> found_with_;
};

} // namespace

std::mutex& fontconfig_mutex()
{
    static std::mutex mutex;
    return mutex;
}

FT_Library font_library() { return thread_faces::instance().library(); }

font_face::font_face(FT_Face face)
    : face_(face)
{
    if (FT_Select_Charmap(face_, FT_ENCODING_UNICODE) != 0)
        symbol_codes_ = FT_Select_Charmap(face_, FT_ENCODING_MS_SYMBOL) == 0;
    ascent_ = face_->ascender;
    descent_ = -face_->descender;
    const auto* os2 = static_cast<const TT_OS2*>(FT_Get_Sfnt_Table(face_, FT_SFNT_OS2));
    const auto* hhea = static_cast<const TT_HoriHeader*>(FT_Get_Sfnt_Table(face_, FT_SFNT_HHEA));
    if (os2 && os2->version != 0xFFFF && os2->usWinAscent + os2->usWinDescent > 0) {
        ascent_ = os2->usWinAscent;
        descent_ = os2->usWinDescent;
    }
    if (hhea)
        external_leading_
            = std::max(0, hhea->Line_Gap - ((ascent_ + descent_) - (hhea->Ascender - hhea->Descender)));
    average_width_ = weighted_average_width();
    if (ascent_ + descent_ <= 0)
        ascent_ = units_per_em();
}

// Newer fonts state the plain average of all glyphs; what the sizes of text were made for is the older
// measure, the average weighted by how often letters occur (OpenType, OS/2 table, versions before 3).
int font_face::weighted_average_width() const
{
    constexpr int weights[] = {
        64, 14, 27, 35, 100, 20, 14, 42, 63, 3, 6, 35, 20, 56, 56, 17, 4, 49, 56, 71, 31, 10, 18, 3, 18, 2};
    constexpr int space_weight = 166;
    constexpr int all_weights = 1000;
    int sum = advance(glyph_of(' ')) * space_weight;
    for (char32_t letter = 'a'; letter <= 'z'; ++letter)
        sum += advance(glyph_of(letter)) * weights[letter - 'a'];
    return sum / all_weights;
}

font_face::~font_face() { FT_Done_Face(face_); }

std::uint32_t font_face::glyph_of_symbol(std::uint8_t byte) const
{
    // Symbol faces keep their signs in the private area from U+F000 on; a few older ones at the byte itself.
    const std::uint32_t glyph = FT_Get_Char_Index(face_, 0xF000U + byte);
    return glyph != 0 ? glyph : FT_Get_Char_Index(face_, byte);
}

int font_face::advance(std::uint32_t glyph) const
{
    int units = 0;
    (void)outline(glyph, &units);
    return units;
}

FT_Outline* font_face::outline(std::uint32_t glyph, int* advance) const
{
    if (FT_Load_Glyph(face_, glyph, FT_LOAD_NO_SCALE | FT_LOAD_NO_HINTING | FT_LOAD_NO_BITMAP) != 0)
        return nullptr;
    if (advance)
        *advance = static_cast<int>(face_->glyph->metrics.horiAdvance);
    return face_->glyph->format == FT_GLYPH_FORMAT_OUTLINE ? &face_->glyph->outline : nullptr;
}

int font_face::kerning(std::uint32_t left, std::uint32_t right) const
{
    FT_Vector distance{};
    return FT_Get_Kerning(face_, left, right, FT_KERNING_UNSCALED, &distance) == 0
        ? static_cast<int>(distance.x)
        : 0;
}

const font_face* find_face(const face_request& request) { return thread_faces::instance().find(request); }

const font_face* find_face_with(char32_t sign, const face_request& request)
{
    return thread_faces::instance().find_with(sign, request);
}

} // namespace klv::gdi
