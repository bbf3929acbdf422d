#pragma once

#include "klv/base/memory.h"
#include "klv/base/types.h"
#include "klv/bitmaps/stream_dib.h"
#include "klv/core/string.h"
#include "klv/formats/wmf_records.h"

#include <array>
#include <cstdint>
#include <memory>
#include <variant>
#include <vector>

namespace klv {

// What a metafile's creation records leave in its object table.

struct wmf_pen_object {
    std::uint16_t style = 0;
    COLORREF colour = 0;
    int width = 1; ///< picture units, as scaled when the pen was made
    int file_width = 0; ///< as the file says
};

struct wmf_brush_object {
    std::uint16_t style = 0;
    COLORREF colour = 0;
    std::uint16_t hatch = 0;
};

struct wmf_font_object {
    vSTRING face;
    int height = 0; ///< picture units, never negative, as scaled when the font was made
    int file_height = 0; ///< as the file says, with its sign
    int file_width = 0; ///< average character width as the file says; 0 for the face's own
    bool character_height = false; ///< the file's height was negative
    bool bold = false;
    bool italic = false;
    int escapement = 0; ///< tenths of a degree, counter-clockwise
    std::uint8_t charset = 0;
};

struct wmf_pattern_brush_object {
    std::unique_ptr<oSTREAMDIB> bitmap;
};

/// Colours in the order of their numbers. The table is shared by the states that select it.
using wmf_colour_table = std::shared_ptr<const std::vector<RGBQUAD, vALLOCATOR<RGBQUAD>>>;

struct wmf_palette_object {
    wmf_colour_table colours;
};

/// Keeps an object number for a record that makes nothing the reader can use.
struct wmf_reserved_object { };

using wmf_object = std::variant<std::monostate, wmf_pen_object, wmf_brush_object, wmf_font_object,
    wmf_pattern_brush_object, wmf_palette_object, wmf_reserved_object>;

/// The object table: a creation record takes the first free entry; when all are used, the object is lost.
class wmf_object_table {
public:
    void add(wmf_object object);
    void remove(std::size_t number);
    /// Null for a number that names nothing.
    const wmf_object* find(std::size_t number) const;

private:
    static constexpr std::size_t entries = 200;
    std::array<wmf_object, entries> table_;
};

wmf_pen_object read_wmf_pen(byte_reader& in);
wmf_brush_object read_wmf_brush(byte_reader& in);
wmf_font_object read_wmf_font(byte_reader& in);
wmf_palette_object read_wmf_palette(byte_reader& in);

} // namespace klv
