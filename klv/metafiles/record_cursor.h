#pragma once

#include "klv/metafiles/metafile_records.h"

#include <cstdint>
#include <utility>

namespace klv {

class vMETAFILE;
class vSTREAM;

/// Walks the records of a recorded picture from the first to the end record. The picture's stream moves with
/// it, so nothing else may use the picture meanwhile. A native picture and one without a stream have none.
class record_cursor {
public:
    explicit record_cursor(vMETAFILE& picture) noexcept;

    /// The next record, the end record included. \return false after it, at the end of the stream, and where
    /// the stream holds no record (see broken).
    bool next(metafile_record& into) noexcept;
    /// Whether the walk ended because the stream holds something that is no record, or only part of one.
    bool broken() const { return broken_; }
    /// Position of the stream: where the next record starts.
    std::uint32_t position() const noexcept;

private:
    vSTREAM* stream_ = nullptr; // null: no more records
    std::uint16_t version_ = 0;
    bool broken_ = false;
};

/// Calls visit(metafile_record&) for each record. \return false when the picture is broken; what comes before
/// the broken record has been visited.
template <class Visit> bool for_each_record(vMETAFILE& picture, Visit&& visit)
{
    record_cursor cursor(picture);
    metafile_record current;
    while (cursor.next(current))
        visit(current);
    return !cursor.broken();
}

} // namespace klv
