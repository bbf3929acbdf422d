#pragma once

#include "klv/core/object.h"
#include "klv/core/real.h"
#include "klv/core/string.h"

#include <cstdint>

namespace klv {

class vDEVICE;
class vSTREAM;

enum vFONTSTYLE : std::int32_t {
    vFONT_NORMAL = 0,
    vFONT_ITALIC = 1,
    vFONT_BOLD = 2,
    vFONT_BOLD_ITALIC = 3,
};

/// What the size of a font measures.
enum vFONT_HEIGHT : std::int32_t {
    vFONT_CHARACTER_HEIGHT = 0, ///< the characters without internal leading; stored negative
    vFONT_CELL_HEIGHT = 1, ///< the whole cell; stored positive
};

/// The attributes of text.
class vFONTSPEC : public vOBJECT {
public:
    /// No name, normal, height 0.
    vFONTSPEC() = default;
    /// \param size points; its sign does not matter
    /// \param kind any value but the two of vFONT_HEIGHT leaves the height 0
    vFONTSPEC(const vSTRING& name, vFONTSTYLE style, const int& size, const vREAL& expansion, unsigned short,
        vFONT_HEIGHT kind, const vANGLE& angle) noexcept;

    [[nodiscard]] const vSTRING& Name() const noexcept { return name_; }
    void Name(const vSTRING& name) noexcept { name_ = name; }
    [[nodiscard]] vFONTSTYLE Style() const noexcept { return style_; }
    void Style(vFONTSTYLE style) noexcept { style_ = style; }
    /// Negative: a character height. Positive: a cell height.
    [[nodiscard]] const int& Height() const noexcept { return height_; }
    void Height(const int& height) noexcept { height_ = height; }
    [[nodiscard]] const vREAL& Expansion() const noexcept { return expansion_; }
    void Expansion(const vREAL& expansion) noexcept { expansion_ = expansion; }
    [[nodiscard]] const vANGLE& Angle() const noexcept { return angle_; }
    void Angle(const vANGLE& angle) noexcept { angle_ = angle; }
    /// Sets the character height.
    void PointSize(const int& points) noexcept
    {
        height_ = static_cast<int>(0u - static_cast<unsigned>(points));
    }
    /// The height in points on the given device (defined with the devices).
    [[nodiscard]] int PointSize(vDEVICE& device) const noexcept;

    friend bool operator==(const vFONTSPEC& a, const vFONTSPEC& b)
    {
        return a.height_ == b.height_ && a.style_ == b.style_ && a.expansion_ == b.expansion_
            && a.angle_ == b.angle_ && a.name_ == b.name_;
    }

    vSTREAM& operator>>(vSTREAM& out) const noexcept;
    vSTREAM& operator<<(vSTREAM& in) noexcept;

private:
    vSTRING name_;
    vFONTSTYLE style_ = vFONT_NORMAL;
    int height_ = 0;
    vREAL expansion_;
    vANGLE angle_;
};

} // namespace klv
