#pragma once

#include "klv/geometry/shape.h"
#include "klv/rendering/render.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace klv::tool {

// The commands of the tool. Each answers the exit status: 0 done, 1 when a file failed.

struct convert_options {
    std::vector<std::string> inputs;
    std::string output; ///< a file, "-", or a directory for several inputs
    std::string format; ///< extension of the outputs where the output's name does not say it
    std::optional<int> depth; ///< bits per pixel of raster outputs; nothing to keep what is there
    std::optional<std::uint32_t> resolution; ///< of files that hold their image in several, 0 the smallest
    render_options render;
};

enum class shape_operation { unite, intersect, offset, smooth };

struct shape_options {
    shape_operation operation = shape_operation::unite;
    std::vector<std::string> inputs; ///< several only to unite or intersect
    std::string output; ///< a file, or "-" for a PNG on standard output
    int distance = 0; ///< of offset: outwards, logical units of the picture; negative for inwards
    bool bevel = false;
    int mean_error = vSHAPE::default_smooth_a; ///< of smooth, squared logical units
    int greatest_error = vSHAPE::default_smooth_b;
    render_options render;
};

int convert(const convert_options& options);
int info(const std::vector<std::string>& files, bool as_json);
int dump(const std::vector<std::string>& files);
int formats();
int shape(const shape_options& options);
int demo(const std::string& output, const render_options& render);

} // namespace klv::tool
