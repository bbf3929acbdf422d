#include "klv/filters/windows/clip_area.h"

#include "klv/base/memory.h"
#include "klv/gdi/gdi.h"
#include "klv/geometry/shape.h"
#include "klv/metafiles/metafile.h"

#include <algorithm>
#include <span>
#include <utility>
#include <vector>

namespace klv {
namespace {

// Excluding a rectangle from "everything" needs an everything; pictures lie well inside it.
constexpr int far_away = 1 << 26;

// A clip area of more rectangles is cut no further: a file that excludes one after the other would cost time
// with the square of their number. A shape holds four times as many points.
constexpr std::size_t most_rectangles = 4096;

// A clip area is recorded anew whenever it changes. Past this many rectangles in all, a file that changes it
// all the time gets bounds, so that the picture does not grow with the square of the file.
constexpr std::size_t most_recorded_rectangles = 250000;

HRGN region_of(const vRECT& rect)
{
    const auto limit = [](int v) { return std::clamp(v, -far_away, far_away); };
    return CreateRectRgn(limit(std::min(rect.Left(), rect.Right())),
        limit(std::min(rect.Top(), rect.Bottom())), limit(std::max(rect.Left(), rect.Right())),
        limit(std::max(rect.Top(), rect.Bottom())));
}

void combine_with(HRGN& region, const vRECT& rect, int mode)
{
    const HRGN other = region_of(rect);
    CombineRgn(region, region, other, mode);
    DeleteObject(other);
}

std::vector<RECT, vALLOCATOR<RECT>> rectangles_of(HRGN region)
{
    const std::uint32_t size = GetRegionData(region, 0, nullptr);
    std::vector<std::uint8_t, vALLOCATOR<std::uint8_t>> data(size);
    std::vector<RECT, vALLOCATOR<RECT>> rectangles;
    if (size < sizeof(RGNDATAHEADER)
        || GetRegionData(region, size, reinterpret_cast<RGNDATA*>(data.data())) == 0)
        return rectangles;
    const auto& head = reinterpret_cast<const RGNDATA*>(data.data())->rdh;
    const auto* first = reinterpret_cast<const RECT*>(data.data() + sizeof(RGNDATAHEADER));
    rectangles.assign(first, first + head.nCount);
    return rectangles;
}

// One rectangular contour for each rectangle; an empty region becomes one without area.
vSHAPE shape_of(std::span<const RECT> rectangles)
{
    std::vector<vPOINT, vALLOCATOR<vPOINT>> points;
    std::vector<std::int32_t, vALLOCATOR<std::int32_t>> counts;
    const auto add = [&](const RECT& r) {
        points.insert(
            points.end(), {{r.left, r.top}, {r.right, r.top}, {r.right, r.bottom}, {r.left, r.bottom}});
        counts.push_back(4);
    };
    std::for_each(rectangles.begin(), rectangles.end(), add);
    if (rectangles.empty())
        add({});
    vSHAPE shape;
    shape.assign_polypolygon(points, counts, 1);
    return shape;
}

} // namespace

clip_area::clip_area(const clip_area& other)
{
    if (!other.region_)
        return;
    exclusions_ = other.exclusions_;
    region_ = CreateRectRgn(0, 0, 0, 0);
    CombineRgn(region_, other.region_, nullptr, RGN_COPY);
}

clip_area::clip_area(clip_area&& other) noexcept
    : region_(std::exchange(other.region_, nullptr))
    , exclusions_(other.exclusions_)
{
}

clip_area& clip_area::operator=(clip_area other) noexcept
{
    std::swap(region_, other.region_);
    std::swap(exclusions_, other.exclusions_);
    return *this;
}

clip_area::~clip_area()
{
    if (region_)
        DeleteObject(region_);
}

void clip_area::intersect(const vRECT& rect)
{
    if (region_)
        combine_with(region_, rect, RGN_AND);
    else
        region_ = region_of(rect);
}

void clip_area::exclude(const vRECT& rect)
{
    if (!region_)
        region_ = CreateRectRgn(-far_away, -far_away, far_away, far_away);
    if (exclusions_ < most_rectangles)
        combine_with(region_, rect, RGN_DIFF);
    ++exclusions_;
}

void clip_area::move(const vPOINT& distance)
{
    if (region_)
        OffsetRgn(region_, distance.x, distance.y);
}

bool clip_area::operator==(const clip_area& other) const
{
    if (!region_ || !other.region_)
        return region_ == other.region_;
    return EqualRgn(region_, other.region_) != 0;
}

std::size_t clip_area::record(vMETAFILE& picture, bool recorded, bool exactly) const
{
    if (recorded)
        picture.RecordPopClipArea();
    if (!region_)
        return 0;
    auto rectangles = rectangles_of(region_);
    if (!exactly || rectangles.size() > most_rectangles) {
        rectangles.resize(1);
        GetRgnBox(region_, rectangles.data());
    }
    picture.RecordPushClipArea();
    picture.ClipArea(shape_of(rectangles));
    return rectangles.size();
}

void clip_recorder::record(vMETAFILE& picture, const clip_area& area)
{
    if (area == recorded_)
        return;
    rectangles_ += area.record(picture, !recorded_.whole(), rectangles_ < most_recorded_rectangles);
    recorded_ = area;
}

} // namespace klv
