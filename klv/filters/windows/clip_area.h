#pragma once

#include "klv/base/types.h"
#include "klv/core/rect.h"

#include <cstddef>

namespace klv {

class vMETAFILE;

/// The clip area that a file's records build, in picture units: whole, or a set of rectangles. A value:
/// saving a drawing state copies it.
class clip_area {
public:
    clip_area() = default;
    clip_area(const clip_area& other);
    clip_area(clip_area&& other) noexcept;
    clip_area& operator=(clip_area other) noexcept;
    ~clip_area();

    bool whole() const { return region_ == nullptr; }
    void intersect(const vRECT& rect);
    void exclude(const vRECT& rect);
    void move(const vPOINT& distance);
    bool operator==(const clip_area& other) const;

    /// Makes this the clip area of what the picture records from now on.
    /// \param recorded whether the picture has recorded a clip area before that is to be taken back.
    /// \param exactly false records the bounds only.
    /// \return number of rectangles recorded
    std::size_t record(vMETAFILE& picture, bool recorded, bool exactly) const;

private:
    HRGN region_ = nullptr;
    std::size_t exclusions_ = 0;
};

/// Tells the picture of the clip area whenever it has changed.
class clip_recorder {
public:
    void record(vMETAFILE& picture, const clip_area& area);

private:
    clip_area recorded_;
    std::size_t rectangles_ = 0; ///< recorded so far
};

} // namespace klv
