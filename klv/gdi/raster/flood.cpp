#include "klv/gdi/raster/flood.h"

#include "klv/gdi/raster/pixel_rows.h"

#include <algorithm>
#include <vector>

namespace klv::gdi {

namespace {

/// Finds the connected pixels run by run.
class flood {
public:
    flood(const surface& s, const box& bounds, std::uint32_t pixel, bool fill_while_equal)
        : bounds_(bounds)
        , width_(bounds.x2 - bounds.x1)
        , open_(static_cast<std::size_t>(width_) * static_cast<std::size_t>(bounds.y2 - bounds.y1))
    {
        std::vector<std::uint32_t> row(static_cast<std::size_t>(width_));
        auto out = open_.begin();
        for (std::int32_t y = bounds.y1; y < bounds.y2; ++y) {
            load_pixels(s, bounds.x1, y, row);
            for (const std::uint32_t p : row)
                *out++ = (p == pixel) == fill_while_equal;
        }
    }

    /// The runs connected with a pixel, in no order.
    std::vector<box> run(std::int32_t x, std::int32_t y)
    {
        std::vector<box> runs;
        std::vector<POINT> seeds{{x, y}};
        while (!seeds.empty()) {
            const POINT seed = seeds.back();
            seeds.pop_back();
            if (!is_open(seed.x, seed.y))
                continue;
            std::int32_t left = seed.x;
            std::int32_t right = seed.x + 1;
            while (is_open(left - 1, seed.y))
                --left;
            while (is_open(right, seed.y))
                ++right;
            std::fill_n(&at(left, seed.y), right - left, std::uint8_t{0});
            runs.push_back({left, seed.y, right, seed.y + 1});
            add_seeds(left, right, seed.y - 1, seeds);
            add_seeds(left, right, seed.y + 1, seeds);
        }
        return runs;
    }

private:
    std::uint8_t& at(std::int32_t x, std::int32_t y)
    {
        return open_[static_cast<std::size_t>(y - bounds_.y1) * static_cast<std::size_t>(width_)
            + static_cast<std::size_t>(x - bounds_.x1)];
    }
    bool is_open(std::int32_t x, std::int32_t y)
    {
        return x >= bounds_.x1 && x < bounds_.x2 && y >= bounds_.y1 && y < bounds_.y2 && at(x, y) != 0;
    }
    /// One seed for each stretch of open pixels beside a run.
    void add_seeds(std::int32_t left, std::int32_t right, std::int32_t y, std::vector<POINT>& seeds)
    {
        for (std::int32_t x = left; x < right; ++x)
            if (is_open(x, y) && (x == left || !is_open(x - 1, y)))
                seeds.push_back({x, y});
    }

    box bounds_;
    std::int32_t width_;
    std::vector<std::uint8_t> open_; ///< one for each pixel that may be filled
};

} // namespace

region connected_pixels(const surface& s, const box& bounds, std::uint32_t pixel, bool while_equal,
    std::int32_t x, std::int32_t y)
{
    flood filling(s, bounds, pixel, while_equal);
    return region{std::span<const box>(filling.run(x, y))};
}

} // namespace klv::gdi
