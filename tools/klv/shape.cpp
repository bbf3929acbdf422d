#include "klv/base/saturating.h"

#include "tools/klv/commands.h"
#include "tools/klv/failure.h"
#include "tools/klv/output.h"
#include "tools/klv/shape_picture.h"

#include <iterator>
#include <utility>

// What the algebra of shapes does to the closed shapes of pictures.

namespace klv::tool {
namespace {

// The result of an operation that answers 0 when it can't be had.
void require(int done)
{
    if (done == 0)
        throw failure("the result has too many points for a shape, or memory ran out");
}

// Pairs first, then pairs of these: no shape takes part in more unions than it must.
vSHAPE united(std::vector<vSHAPE> shapes)
{
    while (shapes.size() > 1) {
        for (std::size_t i = 0; 2 * i < shapes.size(); ++i) {
            if (2 * i + 1 < shapes.size())
                require(shapes[2 * i].Union(shapes[2 * i + 1]));
            if (i > 0)
                shapes[i] = std::move(shapes[2 * i]);
        }
        shapes.resize((shapes.size() + 1) / 2);
    }
    // A single shape may still overlap itself.
    require(shapes[0].Union(vSHAPE()));
    return std::move(shapes[0]);
}

vSHAPE intersected(std::vector<vSHAPE> shapes)
{
    for (const auto& shape : shapes)
        require(shapes[0].Intersection(shape));
    return std::move(shapes[0]);
}

// Lays the other picture's extents on those of the page.
void fit(vSHAPE& shape, const vMETAFILE& picture, const vMETAFILE& page)
{
    const double width = picture.LogicalWidth(), height = picture.LogicalHeight();
    if (width == 0 || height == 0)
        return;
    const double fx = page.LogicalWidth() / width, fy = page.LogicalHeight() / height;
    const int left = picture.LogicalXOffset(), top = picture.LogicalYOffset();
    const int to_left = page.LogicalXOffset(), to_top = page.LogicalYOffset();
    const auto place = [](int v, int from, double factor, int to) {
        return round_saturated((static_cast<double>(v) - from) * factor + to);
    };
    require(shape.map_points(
        [&](const vPOINT& p) { return vPOINT(place(p.x, left, fx, to_left), place(p.y, top, fy, to_top)); }));
}

std::vector<vSHAPE> shapes_of(shape_picture& picture, const std::string& file, const vMETAFILE& page)
{
    auto shapes = picture.closed_shapes();
    if (shapes.empty())
        throw failure("has no closed shapes");
    if (!picture.warning().empty())
        print_warning(file, picture.warning());
    for (auto& shape : shapes)
        fit(shape, picture.picture(), page);
    return shapes;
}

// Reads all pictures and combines their closed shapes to one. \param current the file at work
shape_picture combined(const shape_options& options, std::string& current)
{
    const bool intersect = options.operation == shape_operation::intersect;
    current = options.inputs[0];
    shape_picture page(current);
    auto shapes = shapes_of(page, current, page.picture());
    // The pictures' areas intersect; those of a single picture, its shapes.
    if (intersect && options.inputs.size() > 1)
        shapes = {united(std::move(shapes))};
    for (std::size_t i = 1; i < options.inputs.size(); ++i) {
        current = options.inputs[i];
        shape_picture other(current);
        auto more = shapes_of(other, current, page.picture());
        if (intersect)
            more = {united(std::move(more))};
        std::move(more.begin(), more.end(), std::back_inserter(shapes));
    }

    std::optional<vSHAPE> result = intersect ? intersected(std::move(shapes)) : united(std::move(shapes));
    return page.edited([&](vSHAPE&) { return std::exchange(result, std::nullopt); });
}

shape_picture changed(const shape_options& options)
{
    shape_picture picture(options.inputs[0]);
    if (!picture.warning().empty())
        print_warning(options.inputs[0], picture.warning());
    return picture.edited([&](vSHAPE& shape) {
        if (options.operation == shape_operation::offset)
            require(shape.Shrink(-options.distance, options.bevel));
        else
            shape.Smooth(options.mean_error, options.greatest_error);
        return std::optional(std::move(shape));
    });
}

} // namespace

int shape(const shape_options& options)
{
    std::string current = options.inputs[0];
    const std::string reason = reason_of_failure([&] {
        const bool combines
            = options.operation == shape_operation::unite || options.operation == shape_operation::intersect;
        auto result = combines ? combined(options, current) : changed(options);
        current = options.output;
        write_output(
            result.picture(), current, {.format = {}, .depth = {}, .input = {}, .render = options.render});
    });
    if (reason.empty())
        return 0;
    print_failure(current, reason);
    return 1;
}

} // namespace klv::tool
