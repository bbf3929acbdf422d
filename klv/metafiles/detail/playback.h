#pragma once

#include "klv/colour/image_colour.h"
#include "klv/core/point.h"
#include "klv/core/rect.h"
#include "klv/geometry/distort.h"
#include "klv/geometry/shape.h"
#include "klv/metafiles/metafile_records.h"

#include <cstdint>

namespace klv {

class vDEVICE;
class vMETAFILE;

/// How a picture that is inserted into another is mapped: from its extents into a rectangle of the other's
/// logical units, mirrored where the rectangle runs backwards.
struct insertion {
    std::int32_t x0 = 0; ///< the picture's extents: first ends and signed sizes
    std::int32_t y0 = 0;
    std::int64_t width = 0;
    std::int64_t height = 0;
    vRECT target;
    std::int32_t mirror_x = 0; ///< a coordinate v becomes mirror - v; 0: no mirror
    std::int32_t mirror_y = 0;
    bool wider = false; ///< the target is flatter than the picture
    bool taller = false; ///< the target is steeper than the picture

    /// Into the target, unmirrored.
    vPOINT log_to_log(const vPOINT& p) const;
    vPOINT operator()(const vPOINT& p) const;
    vRECT operator()(const vRECT& r) const;
};

/// What playback does with every record before the device gets it.
struct playback_mapping {
    IDistort* distort = nullptr; ///< from the picture to the device's logical units; null: the same
    IDistort* bitmap_distort = nullptr; ///< the same for bitmaps
    const insertion* inserted = nullptr; ///< set when the device is a picture that takes this one in
    double line_scale = 1.0; ///< of line widths; not used while inserting
    vRECT source; ///< the part of the picture, from its upper left corner, whose bitmaps are drawn
    vIMAGECOLOUR colour;
};

/// Replays the records of one picture on a device. Shapes go through one that is kept from record to record.
class record_player {
public:
    record_player(vMETAFILE& picture, vDEVICE& device, const playback_mapping& mapping)
        : picture_(picture)
        , device_(device)
        , mapping_(mapping)
    {
    }

    /// Plays to the end record, to the first record that can't be read, or until the picture's progress
    /// indicator stops it.
    void play() noexcept;

    void operator()(const state_record& r);
    void operator()(line_spec_record& r);
    void operator()(fill_spec_record& r);
    void operator()(const font_spec_record& r);
    void operator()(clip_area_record& r);
    void operator()(polyline_record& r);
    void operator()(const rectangle_record& r);
    void operator()(const ellipse_record& r);
    void operator()(const shape_record& r);
    void operator()(const round_rectangle_record& r);
    void operator()(const arc_record& r);
    void operator()(const reserved_record&) { }
    void operator()(const text_record& r);
    void operator()(const bitmap_record& r);
    void operator()(const text_transparency_record& r);
    void operator()(const text_on_line_record& r);
    void operator()(const end_record&) { }

private:
    vPOINT mapped(vPOINT p) const;
    vRECT mapped(const vRECT& r) const;
    bool mirrored() const;
    bool has_context() const;
    vCOLOUR recoloured(const vCOLOUR& colour) const;
    int line_width(int width) const;
    void draw_scratch();
    void draw_bitmap(const oDIB& bitmap, const vRECT& place, const vRECT& part, const vIMAGECOLOUR& colour);
    void draw_text_bitmap(const vSTRING& text, const vPOINT& start);
    void draw_text(const vSTRING& text, const vPOINT& baseline_start);

    vMETAFILE& picture_;
    vDEVICE& device_;
    const playback_mapping& mapping_;
    vSHAPE scratch_;
};

} // namespace klv
