#pragma once

#include "klv/core/object.h"
#include "klv/geometry/distort.h"

#include <array>
#include <atomic>
#include <cstdint>

namespace klv {

/// An affine mapping: (x, y) to (m0 x + m1 y + m2, m3 x + m4 y + m5), truncated toward zero and held within
/// 32 bits. The identity when made; one reference.
class oMATRIX final : public vOBJECT, public IDistort {
public:
    oMATRIX() noexcept = default;
    explicit oMATRIX(const std::array<double, 6>& coefficients) noexcept
        : m_(coefficients)
    {
    }
    oMATRIX(const oMATRIX& other) noexcept
        : m_(other.m_)
    {
    }
    oMATRIX& operator=(const oMATRIX& other) noexcept
    {
        m_ = other.m_;
        return *this;
    }

    /// A new identity matrix, or null when memory is out. Given back with DeleteMatrix or Release.
    static oMATRIX* CreateMatrix() noexcept;
    /// Gives up the caller's reference; null is allowed.
    static void DeleteMatrix(IDistort* matrix) noexcept;

    std::uint32_t AddRef() noexcept override;
    std::uint32_t Release() noexcept override;
    IDistort* Duplicate() const noexcept override;
    int IsEqual(const IDistort& other, int translations) const noexcept override;
    int IsLinear() const noexcept override { return 1; }
    void Transform(vPOINT* points, std::int32_t count) const noexcept override;
    double Coefficient(std::int32_t index) const noexcept override;
    vRECT MapBbox(
        std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom) const noexcept override;
    std::int32_t MapLength(std::int32_t length) const noexcept override;
    IDistort* MapOp2(const IDistort& next) const noexcept override;
    void MapNothing() noexcept override { }
    IDistort* MapOp3() const noexcept override;

    /// These four change the matrix to apply its present mapping first and then the named one.
    void Translate(double dx, double dy) noexcept;
    void Scale(double sx, double sy) noexcept;
    /// Turns (1, 0) toward (0, 1) about the centre.
    void Rotate(double radians, double centre_x, double centre_y) noexcept;
    /// False, and unchanged, when the other mapping is not linear.
    bool Combine(const IDistort& next) noexcept;

    [[nodiscard]] const std::array<double, 6>& coefficients() const noexcept { return m_; }
    /// The mapped point without truncation.
    [[nodiscard]] std::array<double, 2> map(double x, double y) const noexcept;

private:
    void then(const std::array<double, 6>& next) noexcept;

    std::atomic<std::uint32_t> references_ = 1;
    std::array<double, 6> m_{1, 0, 0, 0, 1, 0};
};

} // namespace klv
