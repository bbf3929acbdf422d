#include "klv/base/saturating.h"
#include "klv/devices/device.h"
#include "klv/devices/outline/coordinates.h"
#include "klv/gdi/gdi.h"

/// Logical units and device pixels: resolution, origin and conversions.
namespace klv {
namespace {

constexpr int default_resolution = 300;

int logical_resolution(int viewport, int resolution, int window) noexcept
{
    if (viewport == 0)
        return resolution;
    const int units = saturated((viewport / 2 + std::int64_t{resolution} * window) / viewport);
    return units == 0 ? resolution : units;
}

} // namespace

void vDEVICE::TakeOverMapping(HDC dc) noexcept
{
    POINT top_left{0, 0};
    klv::DPtoLP(dc, &top_left, 1);
    SetViewportOrgEx(dc, 0, 0, nullptr);
    SetWindowOrgEx(dc, top_left.x, top_left.y, nullptr);
    SIZE window{1, 1};
    SIZE viewport{1, 1};
    GetWindowExtEx(dc, &window);
    GetViewportExtEx(dc, &viewport);
    log_units_horz_ = logical_resolution(viewport.cx, GetDeviceCaps(dc, LOGPIXELSX), window.cx);
    log_units_vert_ = logical_resolution(viewport.cy, GetDeviceCaps(dc, LOGPIXELSY), window.cy);
    origin_ = vPOINT() - vPOINT(top_left);
    SetMapMode(dc, MM_TEXT);
    SetWindowOrgEx(dc, 0, 0, nullptr);
    SetViewportOrgEx(dc, 0, 0, nullptr);
}

int vDEVICE::ReadResolution(int index) const noexcept
{
    // Asking for the context is not const because it counts references; the reference is given back.
    auto& device = const_cast<vDEVICE&>(*this);
    const int resolution = GetDeviceCaps(device.GetWinDC(), index);
    device.ReleaseWinDC();
    return resolution > 0 ? resolution : default_resolution;
}

int vDEVICE::DevUnitsPerHorzInch() const noexcept
{
    if (dev_units_horz_ == 0)
        dev_units_horz_ = ReadResolution(LOGPIXELSX);
    return dev_units_horz_;
}

int vDEVICE::DevUnitsPerVertInch() const noexcept
{
    if (dev_units_vert_ == 0)
        dev_units_vert_ = ReadResolution(LOGPIXELSY);
    return dev_units_vert_;
}

int vDEVICE::LogUnitsPerHorzInch() const noexcept
{
    if (log_units_horz_ == 0)
        log_units_horz_ = DevUnitsPerHorzInch();
    return log_units_horz_;
}

int vDEVICE::LogUnitsPerVertInch() const noexcept
{
    if (log_units_vert_ == 0)
        log_units_vert_ = DevUnitsPerVertInch();
    return log_units_vert_;
}

void vDEVICE::LogUnitsPerHorzInch(const int& units) noexcept
{
    if (units != 0)
        log_units_horz_ = units;
}

void vDEVICE::LogUnitsPerVertInch(const int& units) noexcept
{
    if (units != 0)
        log_units_vert_ = units;
}

unit_mapping vDEVICE::Mapping() const noexcept
{
    return {{DevUnitsPerHorzInch(), LogUnitsPerHorzInch()}, {DevUnitsPerVertInch(), LogUnitsPerVertInch()},
        origin_.x, origin_.y};
}

void vDEVICE::LPtoDP(vPOINT& point) const noexcept { point = Mapping()(point.x, point.y); }

void vDEVICE::DPtoLP(vPOINT& point) const noexcept
{
    const unit_mapping mapping = Mapping();
    point.x = saturated(mapping.x.to_logical(point.x) - mapping.origin_x);
    point.y = saturated(mapping.y.to_logical(point.y) - mapping.origin_y);
}

void vDEVICE::LPtoDP(vRECT& rect) const noexcept
{
    const unit_mapping mapping = Mapping();
    rect = vRECT(vPOINT(mapping(rect.Left(), rect.Top())), vPOINT(mapping(rect.Right(), rect.Bottom())));
}

void vDEVICE::DPtoLP(vRECT& rect) const noexcept
{
    vPOINT top_left = rect.TopLeft();
    vPOINT bottom_right = rect.BottomRight();
    DPtoLP(top_left);
    DPtoLP(bottom_right);
    rect = vRECT(top_left, bottom_right);
}

int vDEVICE::LHtoDH(int length) const noexcept { return clamp_coordinate(Mapping().x.to_device(length)); }

int vDEVICE::LVtoDV(int length) const noexcept { return clamp_coordinate(Mapping().y.to_device(length)); }

int vDEVICE::DHtoLH(int length) const noexcept { return saturated(Mapping().x.to_logical(length)); }

int vDEVICE::DVtoLV(int length) const noexcept { return saturated(Mapping().y.to_logical(length)); }

POINT vDEVICE::vPOINTtoPOINT(const vPOINT& point) noexcept { return point; }

vPOINT vDEVICE::POINTtovPOINT(const POINT& point) noexcept { return point; }

RECT vDEVICE::vRECTtoRECT(const vRECT& rect) noexcept { return rect; }

vRECT vDEVICE::RECTtovRECT(const RECT& rect) noexcept { return rect; }

vPOINT vDEVICE::MidPoint(const vPOINT& a, const vPOINT& b) noexcept
{
    return {static_cast<int>((std::int64_t{a.x} + b.x) / 2), static_cast<int>((std::int64_t{a.y} + b.y) / 2)};
}

} // namespace klv
