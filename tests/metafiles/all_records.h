#pragma once

#include "klv/bitmaps/memory_dib.h"
#include "klv/metafiles/detail/record_stream.h"
#include "klv/metafiles/metafile.h"
#include "klv/metafiles/metafile_records.h"

#include <vector>

namespace klv {

/// One record of every code, bitmaps in every layout, without the end record.
inline std::vector<metafile_record> one_of_each_record()
{
    const vRECT rect(-3, 4, 500, 600);
    const vPOINT corners[] = {vPOINT(0, 0), vPOINT(40, 0), vPOINT(40, 30)};
    std::vector<metafile_record> all;
    for (auto c = 10; c <= 19; ++c)
        all.push_back(state_record{record_code{static_cast<std::uint16_t>(c)}});
    all.push_back(line_spec_record{
        vLINESPEC(vLINE_DASH_DOT, vCOLOUR(1, 2, 3), 5, vCORNER_ROUND, vDASH_FLAT, nullptr, -1, -1)});
    all.push_back(fill_spec_record{vFILLSPEC(vFILL_RADIAL, vCOLOUR(9, 8, 7),
        vCOLOUR(vCOLOUR_CMYK, 0x0A141E28, 50, 1), vANGLE(30.5), vFILL_WINDING, vPOINT(-7, 8))});
    all.push_back(font_spec_record{
        vFONTSPEC("Times", vFONT_ITALIC, 14, vREAL(0.5), 0, vFONT_CELL_HEIGHT, vANGLE(-90.0))});
    all.push_back(clip_area_record{vSHAPE(3, corners)});
    polyline_record line;
    line.points = {vPOINT(1, 1), vPOINT(100000, -5), vPOINT(2, 2)};
    all.push_back(std::move(line));
    all.push_back(rectangle_record{rect});
    all.push_back(ellipse_record{rect});
    all.push_back(shape_record{vSHAPE(3, corners, 0)});
    all.push_back(reserved_record{record_code::reserved_34});
    all.push_back(text_record{vSTRING("in a \"rectangle\""), rect, 2});
    all.push_back(reserved_record{record_code::reserved_37});
    all.push_back(text_transparency_record{1});
    all.push_back(text_on_line_record{vSTRING("on a line"), vPOINT(6, 7)});
    all.push_back(arc_record{record_code::arc, rect, vPOINT(1, 2), vPOINT(3, 4)});
    all.push_back(arc_record{record_code::pie, rect, vPOINT(5, 6), vPOINT(7, 8)});
    all.push_back(arc_record{record_code::chord, rect, vPOINT(9, 10), vPOINT(11, 12)});
    all.push_back(round_rectangle_record{rect, vSIZE(20, 10)});
    for (auto layout = 1; layout <= 5; ++layout) {
        bitmap_record r;
        r.layout = bitmap_layout{static_cast<std::uint16_t>(layout)};
        switch (r.layout) {
        case bitmap_layout::centred:
            r.ignored = vPOINT(77, 78);
            r.centre = vPOINT(100, 50);
            break;
        case bitmap_layout::cut:
            r.source = vRECT(1, 0, 3, 2);
            [[fallthrough]];
        case bitmap_layout::placed:
            r.destination = rect;
            break;
        case bitmap_layout::transparent:
            r.destination = rect;
            r.transparency = 2;
            r.transparent_colour = vCOLOUR(255, 0, 255);
            r.threshold = 7;
            break;
        default:
            break;
        }
        r.bitmap.reset(new oMEMDIB(5, 3, 24, oMODEL_RGB24, 0));
        all.emplace_back(std::move(r));
    }
    return all;
}

/// Appends records to a stream that holds at least a header.
inline void append(vSTREAM& stream, const std::vector<metafile_record>& records)
{
    stream.MoveFromEnd(0);
    record_writer out(stream);
    for (const metafile_record& r : records)
        write_record(out, r);
}

/// Puts the version into the header of the picture in the stream.
inline void set_version(vSTREAM& stream, std::uint16_t version)
{
    stream.MoveFromStart(vMETAFILE::version_offset);
    stream.WriteUWord(version);
    stream.MoveFromEnd(0);
}

} // namespace klv
