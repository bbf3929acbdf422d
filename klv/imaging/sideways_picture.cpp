#include "klv/imaging/sideways_picture.h"

#include "klv/imaging/pixel_lines.h"

#include <algorithm>

namespace klv::imaging {

namespace {

constexpr std::size_t bits_per_byte = 8;
constexpr std::size_t rgb_bytes = 3;

std::uint8_t index_at(const std::uint8_t* line, std::size_t i, std::size_t bits)
{
    const std::size_t at = i * bits;
    const std::size_t shift = bits_per_byte - bits - at % bits_per_byte;
    return static_cast<std::uint8_t>(line[at / bits_per_byte] >> shift & ((1U << bits) - 1));
}

} // namespace

sideways_picture::sideways_picture(const bitmap_handle& shown, bool from_the_right, bool bottom_up)
    : width_(static_cast<std::size_t>(shown.width))
    , height_(static_cast<std::size_t>(shown.height))
    , bits_(shown.bits_per_pixel)
    , from_the_right_(from_the_right)
    , bottom_up_(bottom_up)
    , stored_bytes_((height_ * static_cast<std::size_t>(bits_) + bits_per_byte - 1) / bits_per_byte)
    , stored_(stored_bytes_ * width_)
{
}

std::uint8_t* sideways_picture::next_line()
{
    return gathered_ < width_ ? stored_.data() + stored_bytes_ * gathered_++ : nullptr;
}

const std::uint8_t* sideways_picture::column(std::size_t x) const
{
    return stored_.data() + stored_bytes_ * (from_the_right_ ? width_ - 1 - x : x);
}

bool sideways_picture::deliver(line_sink& sink) const
{
    std::vector<std::uint8_t> indices(bits_ == 24 ? 0 : width_);
    for (std::size_t y = 0; y < height_; ++y) {
        std::uint8_t* const line = sink.next_line();
        if (!line)
            return false;
        const std::size_t at = bottom_up_ ? height_ - 1 - y : y;
        if (bits_ == 24) {
            for (std::size_t x = 0; x < width_; ++x)
                std::copy_n(column(x) + at * rgb_bytes, rgb_bytes, line + x * rgb_bytes);
            continue;
        }
        for (std::size_t x = 0; x < width_; ++x)
            indices[x] = index_at(column(x), at, static_cast<std::size_t>(bits_));
        pack_indices(indices.data(), line, width_, bits_);
    }
    return sink.finish();
}

} // namespace klv::imaging
