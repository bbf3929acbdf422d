#include "klv/metafiles/detail/playback.h"
#include "klv/metafiles/detail/rectangles.h"
#include "klv/metafiles/metafile.h"
#include "klv/metafiles/metafile_records.h"

#include <cstdint>
#include <cstdlib>

namespace klv {

namespace {

constexpr std::uint32_t end_record_size = 2;

// Products of coordinates and extents pass 64 bits when a file has them at their limits.
__extension__ using wide = __int128;

std::int32_t narrow(wide value) { return wrap_narrow(static_cast<std::int64_t>(value)); }

// distance * size / extent, rounded by half of extent; truncates toward zero. extent is not 0.
wide scaled(wide distance, wide size, wide extent) { return (distance * size + extent / 2) / extent; }

// A coordinate of the picture, `distance` from the extent's first end, on one axis of the target.
std::int32_t along_axis(std::int64_t distance, std::int64_t extent, std::int32_t first, std::int32_t last)
{
    const std::int32_t size = wrap_sub(last, first);
    if (extent == 0)
        return first;
    return size >= 1 ? narrow(first + scaled(distance, size, extent))
                     : narrow(last + scaled(-distance, size, extent));
}

// Where an axis starts, in the target's units per inch while a picture is inserted.
std::int32_t axis_origin(wide first, wide last, wide extent, wide x0)
{
    const wide size = last - first;
    const wide half = ((size < 0 ? -size : size) + 1) / 2;
    if (size < 0)
        return narrow((last * extent + half) / -size - x0);
    return narrow((first * extent + half) / size - x0);
}

std::int32_t axis_units(wide extent, wide units, wide size)
{
    return narrow((extent * units + (size + 1) / 2) / size);
}

// Height over width, rounded.
std::uint16_t steepness(std::int64_t width, std::int64_t height)
{
    return static_cast<std::uint16_t>((height + (width + 1) / 2) / width & 0xFFFF);
}

vREAL quotient(const vREAL& a, const vREAL& b) { return b() == 0 ? vREAL() : a / b; }

// The units and the origin of a device, put back when the object goes.
class kept_mapping {
public:
    explicit kept_mapping(vDEVICE& device)
        : device_(device)
        , horizontal_(device.LogUnitsPerHorzInch())
        , vertical_(device.LogUnitsPerVertInch())
        , origin_(device.Origin())
    {
    }
    ~kept_mapping()
    {
        device_.LogUnitsPerHorzInch(horizontal_);
        device_.LogUnitsPerVertInch(vertical_);
        device_.Origin(origin_);
    }
    kept_mapping(const kept_mapping&) = delete;
    kept_mapping& operator=(const kept_mapping&) = delete;

private:
    vDEVICE& device_;
    int horizontal_;
    int vertical_;
    vPOINT origin_;
};

// What is appended goes over the end record.
void move_before_end(vSTREAM& stream)
{
    stream.MoveFromEnd(0);
    if (stream.Size() < vMETAFILE::header_size + end_record_size)
        return;
    stream.MoveFromEnd(end_record_size);
    if (record_code{stream.ReadUWord()} == record_code::end)
        stream.MoveFromEnd(end_record_size);
}

} // namespace

vPOINT insertion::log_to_log(const vPOINT& p) const
{
    return vPOINT(along_axis(std::int64_t{p.x} - x0, width, target.Left(), target.Right()),
        along_axis(std::int64_t{p.y} - y0, height, target.Top(), target.Bottom()));
}

vPOINT insertion::operator()(const vPOINT& p) const
{
    const vPOINT q = log_to_log(p);
    return vPOINT(
        mirror_x != 0 ? wrap_sub(mirror_x, q.x) : q.x, mirror_y != 0 ? wrap_sub(mirror_y, q.y) : q.y);
}

vRECT insertion::operator()(const vRECT& r) const
{
    return vRECT((*this)(r.TopLeft()), (*this)(r.BottomRight()));
}

void vMETAFILE::InsertInto(vMETAFILE& target, const vRECT& rect) noexcept
{
    const std::int64_t rect_width = std::abs(std::int64_t{rect.Width()});
    const std::int64_t rect_height = std::abs(std::int64_t{rect.Height()});
    const bool shares_stream = target.stream_ && target.stream_ == stream_;
    if (rect_width == 0 || rect_height == 0 || shares_stream)
        return;

    insertion place;
    place.x0 = x0_;
    place.y0 = y0_;
    place.width = std::int64_t{x1_} - x0_;
    place.height = std::int64_t{y1_} - y0_;
    place.target = rect;
    if (LogicalWidth() != 0) {
        const std::uint16_t picture_steepness = steepness(LogicalWidth(), LogicalHeight());
        const std::uint16_t target_steepness = steepness(rect_width, rect_height);
        place.taller = target_steepness > picture_steepness;
        place.wider = target_steepness < picture_steepness;
    }

    const kept_mapping kept(target);
    const int target_width = target.LogicalWidth();
    const int target_height = target.LogicalHeight();
    target.update_extents(rect);
    if (target_height < LogicalWidth() || target_width < LogicalHeight()) {
        const int left = target.LogicalXOffset();
        const int top = target.LogicalYOffset();
        target.LogicalExtents(left, wrap_add(left, wrap_add(target.LogicalWidth(), 1)), top,
            wrap_add(top, wrap_add(target.LogicalHeight(), 1)));
    }

    if (place.height != 0) {
        const vREAL target_inches
            = quotient(vREAL::FromRaw(rect.Height()), vREAL::FromRaw(target.LogUnitsPerVertInch()));
        const vREAL picture_inches
            = quotient(vREAL::FromRaw(wrap_sub(y1_, y0_)), vREAL::FromRaw(LogUnitsPerVertInch()));
        target.SetFontRatio(quotient(target_inches, picture_inches));
    }
    target.LogUnitsPerHorzInch(axis_units(place.width, target.LogUnitsPerHorzInch(), rect_width));
    target.LogUnitsPerVertInch(axis_units(place.height, target.LogUnitsPerVertInch(), rect_height));
    target.Origin(vPOINT(axis_origin(rect.Left(), rect.Right(), place.width, x0_),
        axis_origin(rect.Top(), rect.Bottom(), place.height, y0_)));
    if (rect.Width() < 0)
        place.mirror_x = wrap_add(wrap_add(rect.Left(), rect.Right()), 1);
    if (rect.Height() < 0)
        place.mirror_y = wrap_add(wrap_add(rect.Top(), rect.Bottom()), 1);

    if (!stream_ || native_)
        return;
    if (target.stream_)
        move_before_end(*target.stream_);
    playback_mapping mapping;
    mapping.inserted = &place;
    mapping.source = vRECT(0, 0, LogicalWidth(), LogicalHeight());
    record_player(*this, target, mapping).play();
    target.EndMetaFile();
}

} // namespace klv
