#pragma once

#include "klv/base/byte_reader.h"
#include "klv/filters/windows/windows_canvas.h"
#include "klv/filters/wmf/wmf_transparent_bitmap.h"
#include "klv/formats/wmf_records.h"

/// One record of a Windows metafile at a time: its bytes become calls of the canvas. Each function takes the
/// records of its kind and answers false for all others.
namespace klv {

[[nodiscard]] inline RECT box_of(const wmf_rect& r) { return {r.left, r.top, r.right, r.bottom}; }
[[nodiscard]] inline RECT box_of(const wmf_area& a) { return {a.x, a.y, a.x + a.width, a.y + a.height}; }

bool decode_wmf_state(const wmf_record& record, windows_canvas& canvas);
bool decode_wmf_mapping(const wmf_record& record, windows_canvas& canvas);
bool decode_wmf_clip(const wmf_record& record, windows_canvas& canvas);
bool decode_wmf_object(const wmf_record& record, windows_canvas& canvas);
bool decode_wmf_figure(const wmf_record& record, windows_canvas& canvas);
bool decode_wmf_text(const wmf_record& record, windows_canvas& canvas);

/// Comments of the library's own writer: the fill of the next figure, the ends of a transparent bitmap.
bool decode_wmf_escape(const wmf_record& record, windows_canvas& canvas, wmf_transparent_bitmap& transparent);

/// Whether a record draws a bitmap at this reading level.
[[nodiscard]] bool is_wmf_bitmap(const wmf_record& record, const reading_policy& policy);
void decode_wmf_bitmap(const wmf_record& record, windows_canvas& canvas, wmf_transparent_bitmap& transparent);

} // namespace klv
