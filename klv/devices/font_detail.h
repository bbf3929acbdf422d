#pragma once

#include "klv/attributes/font_spec.h"
#include "klv/base/memory.h"
#include "klv/base/types.h"
#include "klv/core/object.h"
#include "klv/core/string.h"
#include "klv/devices/device.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <unordered_map>
#include <utility>
#include <vector>

namespace klv {

/// One installed font family, as enumerated by vDEVICE::LoadFont.
class vFONT : public vOBJECT {
public:
    vFONT() = default;
    vFONT(const char* face_name, std::uint8_t charset, std::uint8_t pitch_and_family) noexcept;

    /// The family's name, NUL-terminated; owned by the object.
    const char* TypeFaceName() const noexcept;
    /// Always "TrueType".
    const char* Description() const noexcept;
    std::uint8_t CharSet() const noexcept { return charset_; }
    std::uint8_t PitchAndFamily() const noexcept { return pitch_and_family_; }

private:
    vSTRING face_name_;
    std::uint8_t charset_ = 0;
    std::uint8_t pitch_and_family_ = 0;
};

/// A font specification as one device realises it: the platform font, its measures, its character widths
/// and the kerning pairs asked for so far. Widths and heights are in the pixels of the device's context.
/// A copy takes the font record and the measures, not the font and the tables.
class vFONTDETAIL : public vFONTSPEC {
public:
    vFONTDETAIL() noexcept;
    vFONTDETAIL(const vFONTSPEC& spec, vDEVICE& device) noexcept;
    vFONTDETAIL(const vFONTDETAIL& other) noexcept;
    vFONTDETAIL& operator=(const vFONTDETAIL& other) noexcept;
    ~vFONTDETAIL();

    /// Clears the measures, the tables and the font.
    void Init() noexcept;
    /// Reads the measures and widths of the font selected into the device's context; once.
    void Init(vDEVICE& device) noexcept;

    /// Advance width of a character; 0 without a device or outside the font's characters.
    int GetCharWidthA(const vCHAR& character) noexcept;
    /// Height of the font, leading included; 0 without a device.
    int GetCharHeight() noexcept;
    /// Width of the whole string in the device's pixels.
    int GetDefStringWidth(vDEVICE& device, const vSTRING& text) noexcept;
    /// Kerning between two characters, asked of the font once per pair. 0 when the font has none.
    std::int16_t GetKernValue(vDEVICE& device, const vCHAR& first, const vCHAR& second) noexcept;
    /// Completes the pair from the table of pairs asked for so far. \return 1 when it was there.
    int GetKerningValue(KERNINGPAIR& pair) const noexcept;
    void SetKerningValue(const KERNINGPAIR& pair) noexcept;

    /// The platform font, null until the device activates it.
    HFONT Font() const noexcept { return font_; }
    /// The height that the font was made with, in the sense of LOGFONTA.
    LONG FontHeight() const noexcept { return font_height_; }
    /// Takes over a platform font, deletes the one held before and forgets what was read from it.
    void Font(HFONT font, LONG height) noexcept;

    std::int16_t Ascent() const noexcept { return ascent_; }
    std::int16_t Descent() const noexcept { return descent_; }
    std::int16_t InternalLeading() const noexcept { return internal_leading_; }
    std::int16_t ExternalLeading() const noexcept { return external_leading_; }
    std::uint16_t FirstChar() const noexcept { return first_char_; }
    std::uint16_t LastChar() const noexcept { return last_char_; }

private:
    void copy_measures(const vFONTDETAIL& other) noexcept;
    bool load() noexcept;
    LONG font_kerning(const KERNINGPAIR& pair) noexcept;

    template <class T> using table = std::vector<T, vALLOCATOR<T>>;

    table<std::int32_t> widths_; // first_char_ to last_char_
    table<KERNINGPAIR> kerning_pairs_; // those asked for
    table<KERNINGPAIR> font_pairs_; // all of the font's, sorted, once one was asked for
    bool font_pairs_read_ = false;
    HFONT font_ = nullptr;
    LONG font_height_ = 0;
    vDEVICE* device_ = nullptr;
    std::int16_t height_ = 0;
    std::int16_t ascent_ = 0;
    std::int16_t descent_ = 0;
    std::int16_t internal_leading_ = 0;
    std::int16_t external_leading_ = 0;
    std::int16_t average_width_ = 0;
    std::int16_t maximum_width_ = 0;
    std::uint8_t pitch_and_family_ = 0;
    std::uint16_t first_char_ = 0;
    std::uint16_t last_char_ = 0;
};

/// The height with which a device realises a font: the point size times the device's font ratio, in pixels
/// of the device. In the sense of LOGFONTA: negative for a character height.
LONG realised_font_height(const vFONTSPEC& spec, vDEVICE& device) noexcept;

/// The realised fonts of a device, most recently used first. A specification is found by its hash, so a
/// picture with thousands of fonts stays linear. Details live as long as the list.
class font_list : public vOBJECT {
public:
    /// The detail of a specification, made when there is none, moved to the head of the list.
    /// \return null when memory is out.
    vFONTDETAIL* use(const vFONTSPEC& spec, vDEVICE& device) noexcept;

    std::size_t size() const noexcept { return details_.size(); }
    /// The most recently used detail, null when there is none.
    const vFONTDETAIL* head() const noexcept { return details_.empty() ? nullptr : &details_.front(); }

private:
    using detail_list = std::list<vFONTDETAIL, vALLOCATOR<vFONTDETAIL>>;
    using index_entry = std::pair<const std::size_t, detail_list::iterator>;

    detail_list details_;
    std::unordered_multimap<std::size_t, detail_list::iterator, std::identity, std::equal_to<>,
        vALLOCATOR<index_entry>>
        index_;
};

/// The installed families, read once by vDEVICE::LoadFont.
struct vDEVICE::font_table : vOBJECT {
    std::vector<vFONT, vALLOCATOR<vFONT>> families;
};

} // namespace klv
