#pragma once

#include "klv/base/memory.h"
#include "klv/base/types.h"
#include "klv/bitmaps/stream_dib.h"
#include "klv/core/string.h"

#include <cstdint>
#include <memory>
#include <variant>
#include <vector>

namespace klv {

// What a file's creation records leave in its object table.

struct canvas_pen {
    std::uint16_t style = 0;
    COLORREF colour = 0;
    int file_width = 0; ///< as the file says
    int width = 1; ///< picture units, as scaled when the pen was made
};

struct canvas_brush {
    std::uint16_t style = 0;
    COLORREF colour = 0;
    std::uint16_t hatch = 0;
};

struct canvas_font {
    vSTRING face;
    int file_height = 0; ///< as the file says, with its sign
    int file_width = 0; ///< average character width as the file says; 0 for the face's own
    int height = 0; ///< picture units, never negative, as scaled when the font was made
    bool character_height = false; ///< the file's height was negative
    bool bold = false;
    bool italic = false;
    int escapement = 0; ///< tenths of a degree, counter-clockwise
    std::uint8_t charset = 0;
};

struct canvas_pattern_brush {
    std::unique_ptr<oSTREAMDIB> bitmap;
};

/// Colours in the order of their numbers. The table is shared by those that select it.
using canvas_colour_table = std::shared_ptr<const std::vector<RGBQUAD, vALLOCATOR<RGBQUAD>>>;

struct canvas_palette {
    canvas_colour_table colours;
};

/// Keeps an object number for a record that makes nothing the reader can use.
struct canvas_reserved { };

using canvas_object = std::variant<std::monostate, canvas_pen, canvas_brush, canvas_font,
    canvas_pattern_brush, canvas_palette, canvas_reserved>;

/// The objects of a file by number. Where a format numbers them by their order, a new one takes the first
/// number that is free; where it names the number, it goes there.
class canvas_object_table {
public:
    /// \param numbers how many there are; an object beyond them is lost.
    explicit canvas_object_table(std::size_t numbers)
        : numbers_(numbers)
    {
    }

    /// Into the first free number.
    void add(canvas_object object);
    /// Into that number, whatever it held.
    void set(std::size_t number, canvas_object object);
    void remove(std::size_t number);
    /// Null for a number beyond all that were ever used.
    [[nodiscard]] const canvas_object* find(std::size_t number) const;

private:
    std::size_t numbers_;
    std::vector<canvas_object, vALLOCATOR<canvas_object>> table_; ///< as long as the highest number used
};

} // namespace klv
