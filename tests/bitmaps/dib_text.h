#pragma once

#include "klv/bitmaps/memory_dib.h"

#include <string>
#include <vector>

namespace klv::test {

/// A 24-bit bitmap drawn as text, top row first: '#' black, '.' white, 'r', 'g', 'b' the primary colours.
inline oMEMDIB dib_of(const std::vector<std::string>& rows)
{
    oMEMDIB dib(static_cast<int>(rows.front().size()), static_cast<int>(rows.size()), 24, oMODEL_RGB24, 0);
    for (std::size_t y = 0; y < rows.size(); ++y) {
        const auto line = dib.line(static_cast<int>(rows.size() - 1 - y));
        for (std::size_t x = 0; x < rows[y].size(); ++x) {
            const char c = rows[y][x];
            line[3 * x] = c == '.' || c == 'b' ? 255 : 0;
            line[3 * x + 1] = c == '.' || c == 'g' ? 255 : 0;
            line[3 * x + 2] = c == '.' || c == 'r' ? 255 : 0;
        }
    }
    return dib;
}

/// The reverse; '?' for any other colour. Works for every depth.
inline std::vector<std::string> text_of(const oDIB& source)
{
    const oMEMDIB dib(source, 0, 0, 24, 0, 0);
    std::vector<std::string> rows;
    for (int y = dib.Height() - 1; y >= 0 && dib.HasPixels(); --y) {
        std::string row;
        for (int x = 0; x < dib.Width(); ++x) {
            const std::uint8_t* p = dib.line(y).data() + 3 * x;
            const int colour = p[2] << 16 | p[1] << 8 | p[0];
            row += colour == 0       ? '#'
                : colour == 0xFFFFFF ? '.'
                : colour == 0xFF0000 ? 'r'
                : colour == 0x00FF00 ? 'g'
                : colour == 0x0000FF ? 'b'
                                     : '?';
        }
        rows.push_back(row);
    }
    return rows;
}

using picture = std::vector<std::string>;

} // namespace klv::test
