#pragma once

#include "klv/base/types.h"
#include "klv/core/rect.h"

#include <cstddef>

namespace klv {

class vMETAFILE;

/// The clip area that a metafile's records build, in picture units: whole, or a set of rectangles. A value:
/// saving a drawing state copies it.
class wmf_clip_area {
public:
    wmf_clip_area() = default;
    wmf_clip_area(const wmf_clip_area& other);
    wmf_clip_area(wmf_clip_area&& other) noexcept;
    wmf_clip_area& operator=(wmf_clip_area other) noexcept;
    ~wmf_clip_area();

    bool whole() const { return region_ == nullptr; }
    void intersect(const vRECT& rect);
    void exclude(const vRECT& rect);
    void move(const vPOINT& distance);
    bool operator==(const wmf_clip_area& other) const;

    /// Makes this the clip area of what the picture records from now on.
    /// \param recorded whether the picture has recorded a clip area before that is to be taken back.
    /// \param exactly false records the bounds only.
    /// \return number of rectangles recorded
    std::size_t record(vMETAFILE& picture, bool recorded, bool exactly) const;

private:
    HRGN region_ = nullptr;
    std::size_t exclusions_ = 0;
};

} // namespace klv
