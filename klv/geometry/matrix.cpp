#include "klv/geometry/matrix.h"

#include "klv/base/saturating.h"

#include <algorithm>
#include <cmath>

namespace klv {

namespace {

constexpr std::int32_t coefficient_count = 6;
constexpr std::array<std::size_t, 2> translation_indices{2, 5};

std::array<double, 6> coefficients_of(const IDistort& distort)
{
    std::array<double, 6> m{};
    for (std::int32_t i = 0; i < coefficient_count; ++i)
        m[static_cast<std::size_t>(i)] = distort.Coefficient(i);
    return m;
}

double determinant(const std::array<double, 6>& m) { return m[0] * m[4] - m[1] * m[3]; }

} // namespace

oMATRIX* oMATRIX::CreateMatrix() noexcept { return new oMATRIX(); }

void oMATRIX::DeleteMatrix(IDistort* matrix) noexcept
{
    if (matrix)
        matrix->Release();
}

std::uint32_t oMATRIX::AddRef() noexcept { return ++references_; }

std::uint32_t oMATRIX::Release() noexcept
{
    const std::uint32_t left = --references_;
    if (left == 0)
        delete this;
    return left;
}

IDistort* oMATRIX::Duplicate() const noexcept { return new oMATRIX(m_); }

int oMATRIX::IsEqual(const IDistort& other, int translations) const noexcept
{
    if (!other.IsLinear())
        return 0;
    const auto theirs = coefficients_of(other);
    for (std::size_t i = 0; i < m_.size(); ++i) {
        const bool is_translation = std::ranges::find(translation_indices, i) != translation_indices.end();
        if ((translations || !is_translation) && m_[i] != theirs[i])
            return 0;
    }
    return 1;
}

std::array<double, 2> oMATRIX::map(double x, double y) const noexcept
{
    return {m_[0] * x + m_[1] * y + m_[2], m_[3] * x + m_[4] * y + m_[5]};
}

void oMATRIX::Transform(vPOINT* points, std::int32_t count) const noexcept
{
    for (std::int32_t i = 0; i < count; ++i) {
        const auto [x, y] = map(points[i].x, points[i].y);
        points[i] = vPOINT(truncate_saturated(x), truncate_saturated(y));
    }
}

double oMATRIX::Coefficient(std::int32_t index) const noexcept
{
    return index >= 0 && index < coefficient_count ? m_[static_cast<std::size_t>(index)] : 0.0;
}

vRECT oMATRIX::MapBbox(
    std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom) const noexcept
{
    std::array<vPOINT, 4> corners{
        vPOINT(left, top), vPOINT(right, top), vPOINT(right, bottom), vPOINT(left, bottom)};
    Transform(corners.data(), corners.size());
    vRECT box(corners[0], corners[0]);
    for (const vPOINT& corner : corners)
        box.EncompassPoint(corner);
    return box;
}

std::int32_t oMATRIX::MapLength(std::int32_t length) const noexcept
{
    return truncate_saturated(length * std::sqrt(std::fabs(determinant(m_))));
}

IDistort* oMATRIX::MapOp2(const IDistort& next) const noexcept
{
    if (!next.IsLinear())
        return nullptr;
    auto* combined = new oMATRIX(m_);
    if (combined)
        combined->then(coefficients_of(next));
    return combined;
}

IDistort* oMATRIX::MapOp3() const noexcept
{
    const double det = determinant(m_);
    if (!std::isnormal(det))
        return nullptr;
    return new oMATRIX({m_[4] / det, -m_[1] / det, (m_[1] * m_[5] - m_[4] * m_[2]) / det, -m_[3] / det,
        m_[0] / det, (m_[3] * m_[2] - m_[0] * m_[5]) / det});
}

void oMATRIX::Translate(double dx, double dy) noexcept { then({1, 0, dx, 0, 1, dy}); }
void oMATRIX::Scale(double sx, double sy) noexcept { then({sx, 0, 0, 0, sy, 0}); }

void oMATRIX::Rotate(double radians, double centre_x, double centre_y) noexcept
{
    const double c = std::cos(radians);
    const double s = std::sin(radians);
    then({c, -s, centre_x - c * centre_x + s * centre_y, s, c, centre_y - s * centre_x - c * centre_y});
}

bool oMATRIX::Combine(const IDistort& next) noexcept
{
    if (!next.IsLinear())
        return false;
    then(coefficients_of(next));
    return true;
}

void oMATRIX::then(const std::array<double, 6>& b) noexcept
{
    const auto a = m_;
    m_ = {a[0] * b[0] + a[3] * b[1], a[1] * b[0] + a[4] * b[1], a[2] * b[0] + a[5] * b[1] + b[2],
        a[0] * b[3] + a[3] * b[4], a[1] * b[3] + a[4] * b[4], a[2] * b[3] + a[5] * b[4] + b[5]};
}

} // namespace klv
