#pragma once

#include "klv/colour/colour.h"
#include "klv/core/object.h"
#include "klv/geometry/shape.h"

#include <cstdint>

namespace klv {

/// The form of a fade; for any other value no fade mask is drawn.
enum vFADETYPE : std::int32_t {
    vFADE_NONE = 0,
    vFADE_LINEAR = 1,
    vFADE_CYLINDRICAL = 2,
    vFADE_RADIAL = 3,
    vFADE_BOX = 4,
    vFADE_SHAPE = 5, ///< follows the record's outline
};

/// An application's own number for the frame that a shaped fade came from. The library only keeps it.
enum vFRAMESHAPE : std::int32_t { vFRAME_NONE = 0 };

/// A transparency gradient.
class vFADESPEC : public vOBJECT {
public:
    vFADESPEC() = default;
    /// \param range,rate per cent, clamped to 0..100
    /// \param angle degrees
    /// \param startLevel,endLevel transparency 0..255, stored as given
    vFADESPEC(vFADETYPE type, int range, int rate, double angle, const vCOLOUR& colour, const vSHAPE& shape,
        vFRAMESHAPE frame, int startLevel, int endLevel) noexcept;

    [[nodiscard]] vFADETYPE GetType() const noexcept { return type_; }
    [[nodiscard]] int GetFadeRange() const noexcept { return range_; }
    [[nodiscard]] int GetFadeRate() const noexcept { return rate_; }
    [[nodiscard]] double GetAngle() const noexcept { return angle_; }
    [[nodiscard]] const vCOLOUR& GetColour() const noexcept { return colour_; }
    [[nodiscard]] const vSHAPE& GetShape() const noexcept { return shape_; }
    [[nodiscard]] vFRAMESHAPE GetShapeType() const noexcept { return frame_; }
    [[nodiscard]] int GetStartTransLevel() const noexcept { return start_level_; }
    [[nodiscard]] int GetEndTransLevel() const noexcept { return end_level_; }

    void SetType(vFADETYPE type) noexcept { type_ = type; }
    /// Clamped to 0..100.
    void SetFadeRange(int percent) noexcept;
    void SetFadeRate(int percent) noexcept;
    void SetAngle(double degrees) noexcept { angle_ = degrees; }
    void SetColour(const vCOLOUR& colour) noexcept { colour_ = colour; }
    void SetShape(const vSHAPE& shape) noexcept { shape_ = shape; }
    void SetShapeType(vFRAMESHAPE frame) noexcept { frame_ = frame; }
    /// Clamped to 0..255.
    void SetStartTransLevel(int level) noexcept;
    void SetEndTransLevel(int level) noexcept;

    bool operator==(const vFADESPEC& other) const noexcept;

private:
    vFADETYPE type_ = vFADE_NONE;
    std::int32_t range_ = 0;
    std::int32_t rate_ = 0;
    double angle_ = 0.0;
    vCOLOUR colour_;
    vSHAPE shape_;
    vFRAMESHAPE frame_ = vFRAME_NONE;
    std::int32_t start_level_ = 0;
    std::int32_t end_level_ = 0;
};

} // namespace klv
