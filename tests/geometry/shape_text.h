#pragma once

#include "klv/geometry/shape.h"

#include <string>

namespace klv {

/// A shape's records as text: "x,y:flags x,y:flags ...".
inline std::string text_of(const vSHAPE& shape)
{
    std::string text;
    for (const auto& r : shape.records()) {
        text += text.empty() ? "" : " ";
        text += std::to_string(r.x()) + ',' + std::to_string(r.y()) + ':' + std::to_string(r.flags());
    }
    return text;
}

/// A closed or open polyline.
inline vSHAPE polyline(std::initializer_list<vPOINT> points, int closed = 1)
{
    vSHAPE shape;
    shape.assign_polyline(std::span(points.begin(), points.size()), closed);
    return shape;
}

inline vSHAPE append(std::initializer_list<vBEZPOINT> points)
{
    vSHAPE shape;
    for (const auto& p : points)
        shape.AppendPoint(p);
    return shape;
}

} // namespace klv
