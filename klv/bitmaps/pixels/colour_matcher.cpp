#include "klv/bitmaps/pixels/colour_matcher.h"

#include <limits>

namespace klv {

colour_matcher::colour_matcher(std::span<const RGBQUAD> colours)
    : colours_(colours.first(colours.size() < 256 ? colours.size() : 256))
{
}

std::uint8_t colour_matcher::search(int blue, int green, int red) const
{
    int least = std::numeric_limits<int>::max();
    std::size_t best = 0;
    for (std::size_t i = 0; i < colours_.size() && least > 0; ++i) {
        const int db = colours_[i].rgbBlue - blue;
        const int dg = colours_[i].rgbGreen - green;
        const int dr = colours_[i].rgbRed - red;
        const int distance = db * db + dg * dg + dr * dr;
        if (distance < least) {
            least = distance;
            best = i;
        }
    }
    return static_cast<std::uint8_t>(best);
}

} // namespace klv
