#include "klv/devices/line/line_shape.h"

#include "klv/attributes/arrowhead.h"
#include "klv/devices/device.h"
#include "klv/devices/line/line_engine.h"
#include "klv/devices/outline/coordinates.h"
#include "klv/devices/outline/flatten.h"

#include <span>

namespace klv {
namespace {

void stroke(vDEVICE& device, const vSHAPE& shape) noexcept
{
    LINEINFO& line = vDEVICE::GetLineInfo();
    line.Init(device);
    const unit_mapping mapping = device.Mapping();
    TraverseShape(shape, mapping, line);
    line.Term();
}

const vARROWHEAD* arrowhead(int index) noexcept
{
    return index < 0 ? nullptr : vLINESPEC::GetArrowhead(static_cast<unsigned>(index));
}

// One end of an open line, in device units.
struct line_end {
    const vARROWHEAD* arrow;
    vPOINT at;
    vPOINT from; // the nearest point of the outline at another place
};

vPOINT in_device_units(const vDEVICE& device, const point_record& record) noexcept
{
    vPOINT point = record.point();
    device.LPtoDP(point);
    return point;
}

line_end start_of(
    const vDEVICE& device, std::span<const point_record> records, const vARROWHEAD* arrow) noexcept
{
    std::size_t near = 1;
    while (near + 1 < records.size() && records[near].point() == records[0].point())
        ++near;
    return {arrow, in_device_units(device, records[0]), in_device_units(device, records[near])};
}

line_end end_of(
    const vDEVICE& device, std::span<const point_record> records, const vARROWHEAD* arrow) noexcept
{
    const std::size_t last = records.size() - 1;
    std::size_t near = last - 1;
    while (near > 0 && records[near].point() == records[last].point())
        --near;
    return {arrow, in_device_units(device, records[last]), in_device_units(device, records[near])};
}

} // namespace

void DrawOutline(vDEVICE& device, const vSHAPE& shape) noexcept
{
    const vLINESPEC& line = device.LineSpec();
    const std::span<const point_record> records = shape.records();
    const vARROWHEAD* const start_arrow = arrowhead(line.StartArrow());
    const vARROWHEAD* const end_arrow = arrowhead(line.EndArrow());
    if (shape.Closed() || records.size() < 2 || (!start_arrow && !end_arrow)) {
        stroke(device, shape);
        return;
    }

    const line_end ends[] = {start_of(device, records, start_arrow), end_of(device, records, end_arrow)};
    const int width = device.LHtoDH(line.Width());
    const vCOLOUR colour = line.Colour();
    device.PushClipArea();
    if (width > 0)
        for (const line_end& end : ends)
            if (end.arrow)
                end.arrow->Clip(device, end.at, end.from, width);
    stroke(device, shape);
    device.PopClipArea();
    if (width > 0)
        for (const line_end& end : ends)
            if (end.arrow)
                end.arrow->Draw(device, end.at, end.from, width, colour);
}

} // namespace klv
