#pragma once

#include "klv/colour/colour.h"
#include "klv/core/object.h"
#include "klv/core/point.h"
#include "klv/core/real.h"

#include <cstdint>
#include <memory>

namespace klv {

class oDIB;
class vSTREAM;

enum vFILLTYPE : std::int32_t {
    vFILL_NONE = 0,
    vFILL_SOLID = 1,
    vFILL_RADIAL = 2,
    vFILL_RADIAL_QUADRATIC = 3, ///< radial with a quadratic ramp
    vFILL_LINEAR_TWO_WAY = 4, ///< colour-from at both edges, colour-to in the middle
    vFILL_LINEAR_LOGARITHMIC = 5,
    vFILL_LINEAR = 6,
    vFILL_PATTERN = 7, ///< a pattern brush in a Windows metafile, nothing on a device
    vFILL_HATCH_FIRST = 8,
    vFILL_HATCH_LAST = 13,
    vFILL_BITMAP = 14, ///< solid when the record holds no bitmap
    vFILL_GEM_FIRST = 15,
    vFILL_GEM_LAST = 50,
    vFILL_BOX = 51, ///< nested rectangles
};

/// Which points a self-crossing outline holds; any value but vFILL_ALTERNATE counts as winding.
enum vFILLMODE : std::int32_t { vFILL_WINDING = 0, vFILL_ALTERNATE = 1 };

/// The attributes of a fill. The record owns its bitmap; a copy has a bitmap of its own.
class vFILLSPEC : public vOBJECT {
public:
    /// What a device starts with: solid black, alternate.
    vFILLSPEC() noexcept;
    vFILLSPEC(vFILLTYPE type, const vCOLOUR& from, const vCOLOUR& to, const vANGLE& angle, vFILLMODE mode,
        const vPOINT& centre) noexcept;
    /// A fill with a copy of dib. When memory is out it holds no bitmap.
    explicit vFILLSPEC(const oDIB& dib) noexcept;
    explicit vFILLSPEC(vSTREAM& in) noexcept;
    vFILLSPEC(const vFILLSPEC& other) noexcept;
    vFILLSPEC(vFILLSPEC&& other) noexcept;
    vFILLSPEC& operator=(const vFILLSPEC& other) noexcept;
    vFILLSPEC& operator=(vFILLSPEC&& other) noexcept;
    ~vFILLSPEC();

    [[nodiscard]] vFILLTYPE Type() const noexcept { return type_; }
    void Type(vFILLTYPE type) noexcept { type_ = type; }
    [[nodiscard]] vFILLMODE Mode() const noexcept { return mode_; }
    void Mode(vFILLMODE mode) noexcept { mode_ = mode; }
    [[nodiscard]] const vCOLOUR& Colour() const noexcept { return from_; }
    void Colour(const vCOLOUR& colour) noexcept { from_ = colour; }
    [[nodiscard]] const vCOLOUR& ColourFrom() const noexcept { return from_; }
    void ColourFrom(const vCOLOUR& colour) noexcept { from_ = colour; }
    [[nodiscard]] const vCOLOUR& ColourTo() const noexcept { return to_; }
    void ColourTo(const vCOLOUR& colour) noexcept { to_ = colour; }
    [[nodiscard]] const vANGLE& Angle() const noexcept { return angle_; }
    void Angle(const vANGLE& angle) noexcept { angle_ = angle; }
    [[nodiscard]] vPOINT Centre() const noexcept { return centre_; }
    void Centre(const vPOINT& centre) noexcept { centre_ = centre; }
    /// Stores the bitmap, which stays the record's, in *out and answers 1; without one answers 0 and leaves
    /// *out alone.
    int Bitmap(oDIB** out) const noexcept;
    [[nodiscard]] int Hatched() const noexcept
    {
        return type_ >= vFILL_HATCH_FIRST && type_ <= vFILL_HATCH_LAST;
    }
    [[nodiscard]] int GemBrush() const noexcept
    {
        return type_ >= vFILL_GEM_FIRST && type_ <= vFILL_GEM_LAST;
    }

    /// Never true for a left record that holds a bitmap, not even against itself.
    bool operator==(const vFILLSPEC& other) const noexcept
    {
        return bitmap_ == nullptr && same_fields(other);
    }
    bool operator!=(const vFILLSPEC& other) const noexcept { return !(*this == other); }

    /// The stream form. The centre is its last 8 bytes, which operator<< leaves to the reader that knows
    /// whether the stream holds them.
    vSTREAM& operator>>(vSTREAM& out) const noexcept;
    vSTREAM& operator<<(vSTREAM& in) noexcept;

private:
    [[nodiscard]] bool same_fields(const vFILLSPEC& other) const
    {
        return from_ == other.from_ && to_ == other.to_ && type_ == other.type_ && angle_ == other.angle_
            && mode_ == other.mode_ && centre_ == other.centre_;
    }

    vCOLOUR from_;
    vCOLOUR to_;
    vANGLE angle_;
    vPOINT centre_;
    vFILLTYPE type_ = vFILL_SOLID;
    vFILLMODE mode_ = vFILL_ALTERNATE;
    std::unique_ptr<oDIB> bitmap_;
};

} // namespace klv
