#pragma once

#include "klv/base/types.h"

#include <array>
#include <cstdint>

namespace klv {

/// Tells which colours match a key colour within a tolerance. The colours are compared in the three planes
/// red-green, red-blue and blue-green; in each the matching values form a quadrilateral about the key that
/// stretches towards black and white, so that lighter and darker shades of the key match first.
class colour_match {
public:
    /// \param tolerance 0 to 100; 0 matches the key itself only
    colour_match(const RGBQUAD& key, int tolerance) noexcept;

    bool operator()(const RGBQUAD& colour) const noexcept
    {
        if (exact_)
            return same(colour, key_);
        return red_green_.holds(colour.rgbRed, colour.rgbGreen)
            && red_blue_.holds(colour.rgbRed, colour.rgbBlue)
            && blue_green_.holds(colour.rgbBlue, colour.rgbGreen);
    }

private:
    // The least and greatest first channel for each value of the second; least > greatest for none.
    class plane {
    public:
        plane() = default;
        plane(int key1, int key2, int tolerance) noexcept;
        bool holds(std::uint8_t c1, std::uint8_t c2) const noexcept
        {
            return rows_[c2].least <= c1 && c1 <= rows_[c2].greatest;
        }

    private:
        struct row {
            std::uint8_t least = 255;
            std::uint8_t greatest = 0;
        };
        void include_edge(double x0, double y0, double x1, double y1) noexcept;
        void include(double x, int y) noexcept;

        std::array<row, 256> rows_{};
    };

    static bool same(const RGBQUAD& a, const RGBQUAD& b) noexcept
    {
        return a.rgbRed == b.rgbRed && a.rgbGreen == b.rgbGreen && a.rgbBlue == b.rgbBlue;
    }

    RGBQUAD key_;
    bool exact_;
    plane red_green_;
    plane red_blue_;
    plane blue_green_;
};

} // namespace klv
