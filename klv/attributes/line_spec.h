#pragma once

#include "klv/attributes/arrowhead.h"
#include "klv/colour/colour.h"
#include "klv/core/object.h"

#include <array>
#include <cstdint>

namespace klv {

class vSTREAM;

enum vLINETYPE : std::int32_t {
    vLINE_NONE = 0,
    vLINE_SOLID = 1,
    vLINE_DOT = 2,
    vLINE_DASH = 3,
    vLINE_DASH_DOT = 4,
    vLINE_DASH_DOT_DOT = 5,
    vLINE_USER = 6, ///< the pattern comes from the caller
};

/// How segments join; any other value is a bevel.
enum vCORNERTYPE : std::int32_t { vCORNER_ROUND = 0, vCORNER_MITRE = 1, vCORNER_BEVEL = 2 };

/// How lines and dashes end; any other value is flat.
enum vDASHTYPE : std::int32_t { vDASH_ROUND = 0, vDASH_FLAT = 1, vDASH_EXTENDED = 2 };

/// The attributes of a line.
class vLINESPEC : public vOBJECT {
public:
    static constexpr std::size_t pattern_length = 6;
    static constexpr int no_arrow = -1;

    /// What a device starts with: solid, black, one unit wide, bevelled corners, no arrows.
    vLINESPEC() = default;
    /// \param width logical units
    /// \param pattern pattern_length bytes, used with vLINE_USER only; may be null
    /// \param startArrow,endArrow index into the arrowhead table, or no_arrow
    vLINESPEC(vLINETYPE type, const vCOLOUR& colour, const int& width, vCORNERTYPE corner, vDASHTYPE dash,
        const unsigned char* pattern, int startArrow, int endArrow) noexcept;
    explicit vLINESPEC(vSTREAM& in) noexcept { *this << in; }

    [[nodiscard]] const vCOLOUR& Colour() const noexcept { return colour_; }
    void Colour(const vCOLOUR& colour) noexcept { colour_ = colour; }
    [[nodiscard]] int& Width() noexcept { return width_; }
    [[nodiscard]] const int& Width() const noexcept { return width_; }
    void Width(const int& width) noexcept { width_ = width; }
    [[nodiscard]] vLINETYPE LineType() const noexcept { return type_; }
    /// Sets the type and what follows from it: the pattern, and for vLINE_NONE the width 0.
    void LineType(vLINETYPE type, const unsigned char* pattern = nullptr) noexcept;
    [[nodiscard]] vCORNERTYPE CornerType() const noexcept { return corner_; }
    void CornerType(vCORNERTYPE corner) noexcept { corner_ = corner; }
    [[nodiscard]] vDASHTYPE DashType() const noexcept { return dash_; }
    void DashType(vDASHTYPE dash) noexcept { dash_ = dash; }
    [[nodiscard]] int StartArrow() const noexcept { return start_arrow_; }
    void StartArrow(int arrow) noexcept { start_arrow_ = arrow; }
    [[nodiscard]] int EndArrow() const noexcept { return end_arrow_; }
    void EndArrow(int arrow) noexcept { end_arrow_ = arrow; }
    /// The length of dash (even i) or gap (odd i) number i; 0 beyond the pattern.
    [[nodiscard]] unsigned char Pattern(unsigned short i) const noexcept
    {
        return i < pattern_length ? pattern_[i] : std::uint8_t{0};
    }

    /// All but the pattern's bytes.
    friend bool operator==(const vLINESPEC& a, const vLINESPEC& b)
    {
        return a.colour_ == b.colour_ && a.width_ == b.width_ && a.type_ == b.type_ && a.corner_ == b.corner_
            && a.dash_ == b.dash_ && a.start_arrow_ == b.start_arrow_ && a.end_arrow_ == b.end_arrow_;
    }

    /// The stream form, 24 bytes; the arrows are not stored and read as none.
    vSTREAM& operator>>(vSTREAM& out) const noexcept;
    vSTREAM& operator<<(vSTREAM& in) noexcept;

    static constexpr unsigned number_of_arrowheads = 10;
    /// The process-wide arrowheads, empty until ArrowheadsInitialised has filled them, and never changed
    /// then.
    static vARROWHEAD arrayArrowheads[number_of_arrowheads];
    static int ArrowheadsInitialised() noexcept;
    static unsigned int GetNumArrowheads() noexcept { return number_of_arrowheads; }
    /// Null when there is no arrowhead i.
    static const vARROWHEAD* GetArrowhead(unsigned int i) noexcept;

private:
    vCOLOUR colour_;
    int width_ = 1;
    vLINETYPE type_ = vLINE_SOLID;
    vCORNERTYPE corner_ = vCORNER_BEVEL;
    vDASHTYPE dash_ = vDASH_ROUND;
    std::array<std::uint8_t, pattern_length> pattern_{};
    std::int32_t start_arrow_ = no_arrow;
    std::int32_t end_arrow_ = no_arrow;
};

} // namespace klv
