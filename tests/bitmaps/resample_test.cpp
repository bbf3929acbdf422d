#include "klv/bitmaps/pixels/resample.h"

#include <cmath>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace klv {
namespace {

struct pixels {
    pixels(int w, int h, int c)
        : width(w)
        , height(h)
        , channels(c)
        , bytes(static_cast<std::size_t>(w) * static_cast<std::size_t>(h) * static_cast<std::size_t>(c))
    {
    }
    pixel_rows rows() const
    {
        return {bytes.data(), std::ptrdiff_t{width} * channels, width, height, channels};
    }
    mutable_pixel_rows target()
    {
        return {bytes.data(), std::ptrdiff_t{width} * channels, width, height, channels};
    }
    int at(int x, int y, int c) const { return rows().row(y)[x * channels + c]; }

    int width, height, channels;
    std::vector<std::uint8_t> bytes;
};

pixels noise(int width, int height, int channels, unsigned seed)
{
    pixels result(width, height, channels);
    std::mt19937 random(seed);
    for (auto& byte : result.bytes)
        byte = static_cast<std::uint8_t>(random());
    return result;
}

/// The mean over a rectangle with fractional edges, the slow obvious way.
double area_mean(const pixels& from, double left, double top, double right, double bottom, int c)
{
    double sum = 0;
    for (int y = 0; y < from.height; ++y)
        for (int x = 0; x < from.width; ++x) {
            const double w = std::min<double>(x + 1, right) - std::max<double>(x, left);
            const double h = std::min<double>(y + 1, bottom) - std::max<double>(y, top);
            if (w > 0 && h > 0)
                sum += w * h * from.at(x, y, c);
        }
    return sum / ((right - left) * (bottom - top));
}

TEST(Resample, BoxesAreRoundedMeans)
{
    const struct {
        int factor_x, factor_y, from, to;
    } cases[] = {{4, 4, 4, 3}, {4, 4, 4, 4}, {2, 2, 3, 3}, {3, 5, 1, 1}, {16, 16, 3, 3}, {15, 16, 4, 3},
        {1, 7, 2, 2}, {1, 1, 4, 3}, {1, 1, 3, 3}};
    for (const auto& c : cases) {
        const pixels from = noise(7 * c.factor_x, 5 * c.factor_y, c.from, 3);
        pixels to(7, 5, c.to);
        ASSERT_TRUE(reduce_box(from.rows(), to.target(), c.factor_x, c.factor_y));
        for (int y = 0; y < 5; ++y)
            for (int x = 0; x < 7; ++x)
                for (int channel = 0; channel < c.to; ++channel) {
                    const double mean = area_mean(from, x * c.factor_x, y * c.factor_y, (x + 1) * c.factor_x,
                        (y + 1) * c.factor_y, channel);
                    EXPECT_EQ(to.at(x, y, channel), std::floor(mean + 0.5 + 1e-9))
                        << c.factor_x << 'x' << c.factor_y << " at " << x << ',' << y;
                }
    }
}

TEST(Resample, BandsGiveWhatOneCallGives)
{
    const pixels from = noise(40, 32, 4, 9);
    pixels whole(10, 8, 3);
    ASSERT_TRUE(reduce_box(from.rows(), whole.target(), 4, 4));
    pixels banded(10, 8, 3);
    for (int first = 0; first < 8; first += 3) {
        const int rows = std::min(3, 8 - first);
        pixel_rows source = from.rows();
        source.first = source.row(4 * first);
        source.height = 4 * rows;
        mutable_pixel_rows target = banded.target();
        target.first = target.row(first);
        target.height = rows;
        ASSERT_TRUE(reduce_box(source, target, 4, 4));
    }
    EXPECT_EQ(banded.bytes, whole.bytes);
}

TEST(Resample, WhiteStaysWhiteAtEverySize)
{
    for (const int size : {1, 2, 3, 7, 100, 999, 1000, 1999}) {
        pixels from(1000, 3, 3);
        std::ranges::fill(from.bytes, std::uint8_t{255});
        pixels to(size, 2, 3);
        ASSERT_TRUE(resample_smooth(from.rows(), to.target()));
        for (const auto byte : to.bytes)
            ASSERT_EQ(byte, 255) << size;
    }
}

TEST(Resample, ShrinkingTakesTheMeanOfTheCoveredArea)
{
    const struct {
        int width, height, to_width, to_height;
    } cases[] = {{10, 10, 4, 3}, {100, 50, 7, 49}, {17, 9, 16, 8}, {64, 64, 1, 1}, {12, 12, 6, 4}};
    for (const auto& c : cases) {
        const pixels from = noise(c.width, c.height, 3, 5);
        pixels to(c.to_width, c.to_height, 3);
        ASSERT_TRUE(resample_smooth(from.rows(), to.target()));
        const double sx = static_cast<double>(c.width) / c.to_width;
        const double sy = static_cast<double>(c.height) / c.to_height;
        for (int y = 0; y < c.to_height; ++y)
            for (int x = 0; x < c.to_width; ++x)
                for (int channel = 0; channel < 3; ++channel)
                    EXPECT_NEAR(to.at(x, y, channel),
                        area_mean(from, x * sx, y * sy, (x + 1) * sx, (y + 1) * sy, channel), 1.0);
    }
}

TEST(Resample, EnlargingInterpolatesBetweenPixelCentres)
{
    pixels from(2, 1, 1);
    from.bytes = {0, 200};
    pixels to(8, 1, 1);
    ASSERT_TRUE(resample_smooth(from.rows(), to.target()));
    EXPECT_EQ(to.bytes, (std::vector<std::uint8_t>{0, 0, 25, 75, 125, 175, 200, 200}));
}

TEST(Resample, NearestTakesThePixelUnderTheCentre)
{
    pixels from(3, 1, 1);
    from.bytes = {10, 20, 30};
    const struct {
        int width;
        std::vector<std::uint8_t> expected;
    } cases[] = {{1, {20}}, {2, {10, 30}}, {3, {10, 20, 30}}, {5, {10, 10, 20, 30, 30}}};
    for (const auto& c : cases) {
        pixels to(c.width, 1, 1);
        ASSERT_TRUE(resample_nearest(from.rows(), to.target()));
        EXPECT_EQ(to.bytes, c.expected) << c.width;
    }
}

TEST(Resample, RefusesWhatDoesNotFit)
{
    const pixels from = noise(8, 8, 4, 1);
    pixels to(2, 2, 3);
    EXPECT_FALSE(reduce_box(from.rows(), to.target(), 3, 4));
    EXPECT_FALSE(reduce_box(from.rows(), to.target(), 0, 4));
    pixels wide(1, 1, 4);
    const pixels large = noise(17, 17, 4, 1);
    EXPECT_FALSE(reduce_box(large.rows(), wide.target(), 17, 17));
    const pixels three = noise(8, 8, 3, 1);
    EXPECT_FALSE(resample_smooth(three.rows(), wide.target()));
    pixels none(0, 1, 4);
    EXPECT_FALSE(resample_smooth(from.rows(), none.target()));
    EXPECT_FALSE(resample_nearest(none.rows(), wide.target()));
}

} // namespace
} // namespace klv
