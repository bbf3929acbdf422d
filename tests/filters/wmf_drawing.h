#pragma once

#include "tests/filters/wmf_builder.h"

#include <cstdint>
#include <initializer_list>
#include <vector>

namespace klv::test {

/// A stored 2 x 2 bitmap: its header, then colours and rows.
inline std::vector<std::uint8_t> small_bitmap(int bits, std::initializer_list<int> colours_and_rows)
{
    auto bytes = wmf_builder::bytes_of({40, 0, 2, 0, 2, 0, 1, bits, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    for (const int b : colours_and_rows)
        bytes.push_back(static_cast<std::uint8_t>(b));
    return bytes;
}

/// Red and green below blue and white.
inline std::vector<std::uint8_t> four_colours()
{
    return small_bitmap(24, {0, 0, 255, 0, 255, 0, 0, 0, 255, 0, 0, 255, 255, 255, 0, 0});
}

/// The parameters of a bitmap record: words, then the four colours.
inline std::vector<std::uint8_t> with_four_colours(const wmf_builder::words& parameters)
{
    auto record = wmf_builder::bytes_of(parameters);
    const auto bitmap = four_colours();
    record.insert(record.end(), bitmap.begin(), bitmap.end());
    return record;
}

/// A picture that uses every kind of figure, brush, clip, text and bitmap.
inline std::vector<std::uint8_t> drawing_of_everything()
{
    using enum wmf_function;
    auto file = wmf_builder().placeable(0, 0, 1000, 1000, 1000).window(0, 0, 1000, 1000);
    file.pen(1, 30, 0xFF)
        .brush(2, 0x00FF00, 5)
        .brush(0, 0xFF0000)
        .font(-120, "Arial", 300)
        .font(-90, "Symbol");
    file.add_bytes(dib_create_pattern_brush, with_four_colours({5, 0}));
    file.select(0).select(1).rectangle(100, 100, 600, 400).add(ellipse, {900, 900, 300, 300});
    file.select(2).add(polygon, {5, 10, 10, 900, 500, 20, 700, 600, 30, 300, 900});
    file.add(poly_polygon, {2, 3, 3, 100, 100, 200, 100, 150, 200, 120, 120, 180, 120, 150, 160});
    file.add(arc, {0, 500, 500, 0, 900, 900, 100, 100}).add(pie, {0, 500, 500, 0, 400, 400, 100, 100});
    file.add(round_rect, {80, 80, 950, 950, 700, 700});
    file.select(5).rectangle(500, 0, 990, 200);
    file.add(save_dc)
        .add(exclude_clip_rect, {300, 300, 200, 200})
        .add(intersect_clip_rect, {900, 900, 50, 50});
    file.select(3).text_out("Words at an angle", 100, 800).select(4).text_out("abc", 400, 400);
    file.add_bytes(stretch_dib, with_four_colours({0x20, 0xCC, 0, 2, 2, 0, 0, 300, 400, 500, 200}));
    file.add(restore_dc, {-1}).add(move_to, {0, 0}).add(line_to, {990, 990});
    return file.build();
}

} // namespace klv::test
