#pragma once

#include "klv/colour/colour.h"
#include "klv/core/object.h"

#include <cstdint>

namespace klv {

enum vCOLOUROVERRIDETYPE : std::int32_t {
    vOVERRIDE_NONE = 0,
    vOVERRIDE_MONOCHROME = 1, ///< in shades of the foreground colour
    vOVERRIDE_DUOTONE = 2, ///< bitmaps go from black through the midtone colour to white
    vOVERRIDE_TRITONE = 3, ///< bitmaps go from the background through the midtone to the foreground colour
};

/// Which pixels of an image are transparent.
enum vTRANSPARENCYTYPE : std::int32_t {
    vTRANSPARENCY_NONE = 0,
    vTRANSPARENCY_WHITE = 1, ///< those that match white
    vTRANSPARENCY_COLOUR = 2, ///< those that match the transparency colour
    vTRANSPARENCY_ALL_BUT_COLOUR = 3, ///< those that do not
};

/// The colour override, balance and transparency with which an image is drawn.
class vIMAGECOLOUR : public vOBJECT {
public:
    static constexpr int normal_balance = 50;

    /// No override, normal balance, opaque.
    vIMAGECOLOUR() = default;
    /// \param c1,c2,c3 midtone, background and foreground colour, in this order
    /// \param brightness,contrast,saturation,threshold per cent, clamped to 0..100
    vIMAGECOLOUR(vCOLOUROVERRIDETYPE type, const vCOLOUR& c1, const vCOLOUR& c2, const vCOLOUR& c3,
        int brightness, int contrast, int saturation, vTRANSPARENCYTYPE ttype, const vCOLOUR& tcolour,
        int threshold) noexcept;

    [[nodiscard]] vCOLOUROVERRIDETYPE GetType() const noexcept { return type_; }
    [[nodiscard]] const vCOLOUR& GetBackgroundColour() const noexcept { return background_; }
    [[nodiscard]] const vCOLOUR& GetMidtoneColour() const noexcept { return midtone_; }
    [[nodiscard]] const vCOLOUR& GetForegroundColour() const noexcept { return foreground_; }
    [[nodiscard]] vTRANSPARENCYTYPE GetTransparency() const noexcept { return transparency_; }
    [[nodiscard]] const vCOLOUR& GetTransparencyColour() const noexcept { return transparency_colour_; }
    [[nodiscard]] int GetTransparencyThreshold() const noexcept { return threshold_; }
    [[nodiscard]] int GetBrightness() const noexcept { return brightness_; }
    [[nodiscard]] int GetContrast() const noexcept { return contrast_; }
    [[nodiscard]] int GetSaturation() const noexcept { return saturation_; }
    [[nodiscard]] int IsTransparent() const noexcept { return transparency_ != vTRANSPARENCY_NONE; }
    [[nodiscard]] int IsNormalBalance() const
    {
        return brightness_ == normal_balance && contrast_ == normal_balance && saturation_ == normal_balance;
    }

    void SetType(vCOLOUROVERRIDETYPE type) noexcept { type_ = type; }
    void SetBackgroundColour(const vCOLOUR& colour) noexcept { background_ = colour; }
    void SetMidtoneColour(const vCOLOUR& colour) noexcept { midtone_ = colour; }
    void SetForegroundColour(const vCOLOUR& colour) noexcept { foreground_ = colour; }
    void SetTransparency(vTRANSPARENCYTYPE type) noexcept { transparency_ = type; }
    void SetTransparencyColour(const vCOLOUR& colour) noexcept { transparency_colour_ = colour; }
    /// Stored as given, unlike the constructor's.
    void SetTransparencyThreshold(int percent) noexcept { threshold_ = percent; }
    /// Clamped to 0..100.
    void SetBrightness(int percent) noexcept;
    void SetContrast(int percent) noexcept;
    void SetSaturation(int percent) noexcept;

    friend bool operator==(const vIMAGECOLOUR&, const vIMAGECOLOUR&) noexcept;

private:
    // The colours of a record that overrides nothing: white at a third of its strength.
    static constexpr vCOLOUR unset_colour{vCOLOUR_RGB, 0x00FFFFFF, 33, 0};

    vCOLOUROVERRIDETYPE type_ = vOVERRIDE_NONE;
    vCOLOUR background_ = unset_colour;
    vCOLOUR midtone_ = unset_colour;
    vCOLOUR foreground_ = unset_colour;
    vCOLOUR transparency_colour_{255, 255, 255};
    vTRANSPARENCYTYPE transparency_ = vTRANSPARENCY_NONE;
    std::int32_t threshold_ = 5;
    std::int32_t brightness_ = normal_balance;
    std::int32_t contrast_ = normal_balance;
    std::int32_t saturation_ = normal_balance;
};

} // namespace klv
