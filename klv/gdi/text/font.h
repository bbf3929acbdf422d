#pragma once

#include "klv/gdi/state/objects.h"
#include "klv/gdi/text/font_charset.h"
#include "klv/gdi/text/font_face.h"
#include "klv/gdi/text/symbol_tables.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace klv::gdi {

/// A logical font: a description that contexts realise at their own scale.
struct font_object : gdi_object {
    static constexpr object_kind kind_id = object_kind::font;
    explicit font_object(const LOGFONTA& description)
        : gdi_object(kind_id)
        , logical(description)
    {
    }
    INT describe(INT size, void* buffer) const override;

    LOGFONTA logical;
};

/// Scale of a context, in device pixels per logical unit; positive.
struct font_scale {
    double x = 1;
    double y = 1;
    friend bool operator==(const font_scale&, const font_scale&) = default;
};

/// One glyph of a realised font. The mask is of one bit a pixel, the top bit first, its rows whole bytes.
struct glyph {
    const font_face* face = nullptr;
    std::uint32_t index = 0; ///< in the face
    std::int32_t advance = 0; ///< pixels along the baseline
    bool known = false;
    bool rendered = false;
    std::int16_t left = 0; ///< from the pen to the mask's left edge
    std::int16_t top = 0; ///< from the pen down to the mask's top edge
    std::uint16_t width = 0;
    std::uint16_t height = 0;
    std::uint32_t bits = 0; ///< offset of the mask in the font's store
};

/// Measures of a realised font, in pixels.
struct font_measures {
    std::int32_t ascent = 0;
    std::int32_t descent = 0;
    std::int32_t internal_leading = 0;
    std::int32_t external_leading = 0;
    std::int32_t average_width = 0;
    std::int32_t maximum_width = 0;
    std::int32_t underline_offset = 0; ///< from the baseline down to the line's top edge
    std::int32_t line_thickness = 1;
    std::int32_t strikeout_offset = 0; ///< the same for the strike-out line; negative is up
};

/// A mask to paint; its place is relative to the pen.
struct pen_mask {
    const std::uint8_t* bits = nullptr;
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::ptrdiff_t stride = 0;
};

/// Renders the part of an outline (26.6 pixels, y up, relative to the pen) that lies within visible into
/// store, which keeps the bits.
pen_mask render_outline(FT_Outline& outline, const RECT& visible, std::vector<std::uint8_t>& store);

/// A logical font at one scale: the face that shows it, its measures and the glyphs used so far. Glyphs are
/// unhinted outlines cut at the pixel centres, so that text drawn at a multiple of its size and averaged
/// keeps its weight.
class realised_font {
public:
    realised_font(const LOGFONTA& logical, const font_scale& scale);

    [[nodiscard]] bool usable() const { return face_ != nullptr; }
    [[nodiscard]] const font_measures& measures() const { return measures_; }
    [[nodiscard]] const font_face* face() const { return face_; }
    [[nodiscard]] std::uint8_t charset() const { return charset_; }
    /// Direction of the baseline, counter-clockwise as seen: its cosine and sine.
    [[nodiscard]] double cosine() const { return cosine_; }
    [[nodiscard]] double sine() const { return sine_; }
    [[nodiscard]] bool turned() const { return turned_; }
    /// Pixels of a length in the face's font units.
    [[nodiscard]] std::int32_t across(int units) const;
    [[nodiscard]] std::int32_t down(int units) const;

    /// The first character of a text that is not empty.
    [[nodiscard]] text_character next(std::string_view text) const;
    [[nodiscard]] std::int32_t advance(const text_character& c) { return find(c).advance; }

    /// The character's mask. Of a glyph too large to be kept only what lies within visible (pixels relative
    /// to the pen) is rendered. The mask is valid until the next call.
    [[nodiscard]] pen_mask render(const text_character& c, const RECT& visible);

private:
    glyph& find(const text_character& c);
    [[nodiscard]] glyph look_up(const text_character& c) const;
    bool set_glyph(glyph& g, char32_t sign) const;
    [[nodiscard]] FT_Outline* shaped_outline(const glyph& g) const;
    void keep(glyph& g, const pen_mask& mask);
    void choose_face(const LOGFONTA& logical);
    void measure(const LOGFONTA& logical, const font_scale& scale);

    face_request request_;
    const font_face* face_ = nullptr;
    std::uint8_t charset_ = 0;
    std::optional<symbol_set> symbols_;
    const code_page* page_ = nullptr;
    double em_ = 0; // height of the em square, pixels
    double stretch_ = 1; // width over height
    double cosine_ = 1;
    double sine_ = 0;
    bool turned_ = false;
    font_measures measures_;

    std::vector<glyph> single_; // by byte
    std::unordered_map<std::uint16_t, glyph> double_; // by both bytes
    std::vector<std::uint8_t> store_; // masks of the glyphs kept
    std::vector<std::uint8_t> scratch_; // mask of the last one that was not
};

/// The font of GetStockObject's index.
std::shared_ptr<font_object> make_stock_font(INT index);

/// The realised form of a font at a scale, from a small store of those that the thread used last.
std::shared_ptr<realised_font> realise(const font_object& font, const font_scale& scale);

} // namespace klv::gdi
