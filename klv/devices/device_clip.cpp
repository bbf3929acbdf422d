#include "klv/base/saturating.h"
#include "klv/devices/device.h"
#include "klv/gdi/gdi.h"

#include <algorithm>
#include <new>

/// The clip area: one region in device units, or none.
namespace klv {
namespace {

HRGN copy_of(HRGN region) noexcept
{
    HRGN copy = CreateRectRgn(0, 0, 0, 0);
    if (copy)
        CombineRgn(copy, region, nullptr, RGN_COPY);
    return copy;
}

RECT normalised(const vRECT& rect) noexcept
{
    return {std::min(rect.Left(), rect.Right()), std::min(rect.Top(), rect.Bottom()),
        std::max(rect.Left(), rect.Right()), std::max(rect.Top(), rect.Bottom())};
}

} // namespace

// Takes the region over; null ends clipping.
void vDEVICE::SetClip(HRGN region) noexcept
{
    const active_dc dc(*this);
    SelectClipRgn(dc, region);
    if (clip_ && clip_ != region)
        DeleteObject(clip_);
    clip_ = region;
}

void vDEVICE::SelectClip(HDC dc) noexcept
{
    if (clip_)
        SelectClipRgn(dc, clip_);
}

void vDEVICE::ClipArea(HRGN region, int mode) noexcept
{
    if (!region) {
        ClearClipArea();
        return;
    }
    const active_dc dc(*this);
    HRGN result = nullptr;
    if (clip_ || mode == RGN_AND || mode == RGN_COPY) {
        result = copy_of(clip_ ? clip_ : region);
        if (clip_ && CombineRgn(result, clip_, region, mode) == ERROR_REGION) {
            DeleteObject(result);
            return;
        }
    } else if (mode == RGN_DIFF || mode == RGN_XOR) {
        result = CreateRectRgn(0, 0, GetDeviceCaps(dc, HORZRES), GetDeviceCaps(dc, VERTRES));
        if (CombineRgn(result, result, region, mode) == ERROR_REGION) {
            DeleteObject(result);
            return;
        }
    }
    if (result)
        SetClip(result);
}

void vDEVICE::ClipArea(const vSHAPE& shape, int mode) noexcept
{
    const active_dc dc(*this);
    const RECT surface{0, 0, GetDeviceCaps(dc, HORZRES), GetDeviceCaps(dc, VERTRES)};
    // A native metafile has no size to keep to.
    HRGN region = surface.right > 0 && !native_metafile_ ? ClippingRegion(shape, surface)
                                                         : GetShapeAsRegion(shape, fill_.Mode());
    // A shape without points has no inside: it is clipped by an empty region, not by none.
    if (!region)
        region = CreateRectRgn(0, 0, 0, 0);
    if (!region)
        return;
    ClipArea(region, mode);
    DeleteObject(region);
}

void vDEVICE::ClipArea(const vRECT& rect, int mode) noexcept
{
    vRECT device_rect = rect;
    LPtoDP(device_rect);
    const RECT box = normalised(device_rect);
    HRGN region = CreateRectRgn(box.left, box.top, box.right, box.bottom);
    if (!region)
        return;
    ClipArea(region, mode);
    DeleteObject(region);
}

vRECT vDEVICE::ClipArea() noexcept
{
    const active_dc dc(*this);
    RECT box{};
    GetClipBox(dc, &box);
    vRECT logical(box);
    DPtoLP(logical);
    logical.Right(saturated(std::int64_t{logical.Right()} + 1));
    logical.Bottom(saturated(std::int64_t{logical.Bottom()} + 1));
    return logical;
}

void vDEVICE::ClearClipArea() noexcept { SetClip(nullptr); }

void vDEVICE::PushClipArea() noexcept
{
    HRGN copy = clip_ ? copy_of(clip_) : nullptr;
    try {
        clip_stack_.push_back(copy);
    } catch (const std::bad_alloc&) {
        if (copy)
            DeleteObject(copy);
    }
}

void vDEVICE::PopClipArea() noexcept
{
    if (clip_stack_.empty())
        return;
    HRGN region = clip_stack_.back();
    clip_stack_.pop_back();
    if (region || clip_)
        SetClip(region);
}

int vDEVICE::ClipAreaIntersect(const vPOINT& point) noexcept
{
    if (native_metafile_)
        return 1;
    const active_dc dc(*this);
    vPOINT device_point = point;
    LPtoDP(device_point);
    return PtVisible(dc, device_point.x, device_point.y);
}

int vDEVICE::ClipAreaIntersect(const vRECT& rect) noexcept
{
    if (native_metafile_)
        return 1;
    const active_dc dc(*this);
    vRECT device_rect = rect;
    LPtoDP(device_rect);
    RECT box = normalised(device_rect);
    if (box.left == box.right)
        --box.left, ++box.right;
    if (box.top == box.bottom)
        --box.top, ++box.bottom;
    return RectVisible(dc, &box);
}

void vDEVICE::ForgetClips() noexcept
{
    if (clip_)
        DeleteObject(clip_);
    clip_ = nullptr;
    for (HRGN region : clip_stack_)
        if (region)
            DeleteObject(region);
    clip_stack_.clear();
}

void vDEVICE::CopyClips(const vDEVICE& other) noexcept
{
    ForgetClips();
    clip_ = other.clip_ ? copy_of(other.clip_) : nullptr;
    try {
        for (HRGN region : other.clip_stack_)
            clip_stack_.push_back(region ? copy_of(region) : nullptr);
    } catch (const std::bad_alloc&) {
        // The copy keeps the outer areas that it has room for.
    }
}

} // namespace klv
