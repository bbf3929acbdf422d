#pragma once

#include <compare>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

namespace klv::gdi {

/// An installed font file, opened once for all sizes: outlines and measures in font units. Each thread opens
/// its own, so that text is drawn without a lock.
class font_face {
public:
    explicit font_face(FT_Face face);
    ~font_face();
    font_face(const font_face&) = delete;
    font_face& operator=(const font_face&) = delete;

    [[nodiscard]] int units_per_em() const { return face_->units_per_EM; }
    /// Cell above and below the baseline, both positive, as font makers mean them for this platform.
    [[nodiscard]] int ascent() const { return ascent_; }
    [[nodiscard]] int descent() const { return descent_; }
    [[nodiscard]] int external_leading() const { return external_leading_; }
    [[nodiscard]] int average_width() const { return average_width_; }
    [[nodiscard]] int maximum_width() const { return face_->max_advance_width; }
    [[nodiscard]] int underline_position() const { return face_->underline_position; }
    [[nodiscard]] int underline_thickness() const { return face_->underline_thickness; }
    [[nodiscard]] bool fixed_pitch() const { return FT_IS_FIXED_WIDTH(face_) != 0; }
    [[nodiscard]] bool bold() const { return (face_->style_flags & FT_STYLE_FLAG_BOLD) != 0; }
    [[nodiscard]] bool italic() const { return (face_->style_flags & FT_STYLE_FLAG_ITALIC) != 0; }
    [[nodiscard]] const char* family() const { return face_->family_name ? face_->family_name : ""; }
    /// A symbol face whose glyphs are reached by their bytes.
    [[nodiscard]] bool has_symbol_codes() const { return symbol_codes_; }

    /// 0 when the face has no such glyph.
    [[nodiscard]] std::uint32_t glyph_of(char32_t unicode) const { return FT_Get_Char_Index(face_, unicode); }
    [[nodiscard]] std::uint32_t glyph_of_symbol(std::uint8_t byte) const;
    [[nodiscard]] int advance(std::uint32_t glyph) const;
    /// Loads a glyph. \return its outline in font units, valid (and the caller's to change) until the next
    /// load; null when it has none.
    [[nodiscard]] FT_Outline* outline(std::uint32_t glyph, int* advance = nullptr) const;
    [[nodiscard]] int kerning(std::uint32_t left, std::uint32_t right) const;
    [[nodiscard]] bool has_kerning() const { return FT_HAS_KERNING(face_) != 0; }

private:
    [[nodiscard]] int weighted_average_width() const;

    FT_Face face_;
    bool symbol_codes_ = false;
    int ascent_ = 0;
    int descent_ = 0;
    int external_leading_ = 0;
    int average_width_ = 0;
};

/// What a face is looked for by.
struct face_request {
    std::string family;
    std::int32_t weight = 400;
    bool italic = false;
    std::uint8_t pitch_and_family = 0; ///< what kind of face to take when the family is not known
    friend auto operator<=>(const face_request&, const face_request&) = default;
};

/// The installed face that comes closest; a family that is not installed gets its metric-compatible
/// substitute. Kept as long as the thread lives. \return null when no font is installed at all.
const font_face* find_face(const face_request& request);

/// A face of that style that has the sign; null when none is installed. The answers are kept too.
const font_face* find_face_with(char32_t sign, const face_request& request);

/// The thread's FreeType library; null when it can't be set up.
FT_Library font_library();

/// Held while Fontconfig is asked.
std::mutex& fontconfig_mutex();

} // namespace klv::gdi
