#pragma once

#include "klv/geometry/shape.h"
#include "klv/metafiles/metafile.h"
#include "klv/metafiles/metafile_records.h"
#include "klv/streams/memory_stream.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace klv::tool {

/// A recorded picture whose closed shapes can be taken and replaced. The other records stay as they are.
class shape_picture {
public:
    /// Reads a file of any vector format; "-" is standard input. Throws failure.
    explicit shape_picture(const std::string& file);

    /// What the file was read with, all the same; empty when nothing was wrong.
    [[nodiscard]] const std::string& warning() const { return warning_; }
    /// The figures that enclose an area: closed shapes, rectangles, ellipses and round rectangles.
    [[nodiscard]] std::vector<vSHAPE> closed_shapes();
    /// A copy of the picture in which each closed shape is what edit makes of it; it is left out when edit
    /// answers nothing or an empty shape. Throws failure.
    [[nodiscard]] shape_picture edited(const std::function<std::optional<vSHAPE>(vSHAPE&)>& edit);

    [[nodiscard]] vMETAFILE& picture() { return *picture_; }

private:
    shape_picture() = default;

    std::string warning_;
    std::unique_ptr<vMEMSTREAM> stream_; // outlives the picture
    std::unique_ptr<vMETAFILE> picture_;
};

} // namespace klv::tool
