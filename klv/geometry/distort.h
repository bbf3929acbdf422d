#pragma once

#include "klv/core/point.h"
#include "klv/core/rect.h"

#include <cstdint>

namespace klv {

/// A mapping of points, counted by reference. Whoever makes one holds the first reference; an object that
/// keeps one adds its own, so objects of several threads may keep the same one: references are counted for
/// all threads, and mapping changes nothing.
class IDistort {
public:
    virtual std::uint32_t AddRef() noexcept = 0;
    /// Answers what is left; at 0 the object is gone.
    virtual std::uint32_t Release() noexcept = 0;
    /// A new object with the same mapping; null when memory is out.
    virtual IDistort* Duplicate() const noexcept = 0;
    /// Compares the coefficients of two linear mappings, the translations only with `translations`; 0 when
    /// either is not linear.
    virtual int IsEqual(const IDistort& other, int translations) const noexcept = 0;
    virtual int IsLinear() const noexcept = 0;
    /// Maps the points in place.
    virtual void Transform(vPOINT* points, std::int32_t count) const noexcept = 0;
    /// Coefficient 0 to 5 of a linear mapping, else 0.
    virtual double Coefficient(std::int32_t index) const noexcept = 0;
    /// The rectangle that bounds the mapped corners; edges in order.
    virtual vRECT MapBbox(
        std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom) const noexcept = 0;
    /// The length times the root of the mapping's change of area, truncated.
    virtual std::int32_t MapLength(std::int32_t length) const noexcept = 0;
    /// A new mapping: this one first, then `next`. Null when they cannot be combined.
    virtual IDistort* MapOp2(const IDistort& next) const noexcept = 0;
    virtual void MapNothing() noexcept = 0;
    /// A new mapping that undoes this one; null when there is none.
    virtual IDistort* MapOp3() const noexcept = 0;

protected:
    ~IDistort() = default;
};

/// Keeps one reference to a distortion (or none).
class distort_ref {
public:
    distort_ref() = default;
    /// Adds a reference of its own.
    explicit distort_ref(IDistort* distort) noexcept
        : distort_(distort)
    {
        if (distort_)
            distort_->AddRef();
    }
    /// Takes over the reference that the caller holds.
    static distort_ref adopt(IDistort* distort) noexcept
    {
        distort_ref ref;
        ref.distort_ = distort;
        return ref;
    }
    distort_ref(const distort_ref& other) noexcept
        : distort_ref(other.distort_)
    {
    }
    distort_ref(distort_ref&& other) noexcept
        : distort_(other.distort_)
    {
        other.distort_ = nullptr;
    }
    distort_ref& operator=(distort_ref other) noexcept
    {
        IDistort* const mine = distort_;
        distort_ = other.distort_;
        other.distort_ = mine;
        return *this;
    }
    ~distort_ref()
    {
        if (distort_)
            distort_->Release();
    }

    [[nodiscard]] IDistort* get() const noexcept { return distort_; }
    IDistort* operator->() const noexcept { return distort_; }
    IDistort& operator*() const noexcept { return *distort_; }
    explicit operator bool() const noexcept { return distort_ != nullptr; }

private:
    IDistort* distort_ = nullptr;
};

} // namespace klv
