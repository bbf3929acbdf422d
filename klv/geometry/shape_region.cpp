#include "klv/gdi/gdi.h"
#include "klv/geometry/shape.h"

namespace klv {

namespace {

class region {
public:
    explicit region(HRGN handle) noexcept
        : handle_(handle)
    {
    }
    region(const region&) = delete;
    region& operator=(const region&) = delete;
    ~region()
    {
        if (handle_ != nullptr)
            DeleteObject(handle_);
    }
    [[nodiscard]] HRGN get() const noexcept { return handle_; }
    [[nodiscard]] HRGN give_up() noexcept { return std::exchange(handle_, nullptr); }

private:
    HRGN handle_;
};

} // namespace

int vSHAPE::Intersect(const vPOINT& point) const noexcept
{
    if (!box_.Intersect(point))
        return 0;
    const region inside(GetShapeAsRegion());
    return inside.get() != nullptr && PtInRegion(inside.get(), point.x, point.y);
}

HRGN vSHAPE::CombineShapes(const vSHAPE& other, int mode) const noexcept
{
    if (!(box_ & other.box_))
        return nullptr;
    const region mine(GetShapeAsRegion());
    const region others(other.GetShapeAsRegion());
    region combined(CreateRectRgn(0, 0, 0, 0));
    if (mine.get() == nullptr || others.get() == nullptr || combined.get() == nullptr)
        return nullptr;
    const int kind = CombineRgn(combined.get(), mine.get(), others.get(), mode);
    return kind == NULLREGION || kind == ERROR_REGION ? nullptr : combined.give_up();
}

} // namespace klv
