#include "klv/bitmaps/dib_reduce.h"

#include "klv/bitmaps/dib_rows.h"

namespace klv {

namespace {

std::uint32_t colour_at(const std::uint8_t* pixel)
{
    return pixel[0] | std::uint32_t{pixel[1]} << 8 | std::uint32_t{pixel[2]} << 16;
}

RGBQUAD entry_of(std::uint32_t colour)
{
    return {static_cast<BYTE>(colour & 0xFF), static_cast<BYTE>(colour >> 8 & 0xFF),
        static_cast<BYTE>(colour >> 16), 0};
}

} // namespace

dib_reducer::dib_reducer(std::int32_t width, std::uint16_t bits) noexcept
    : width_(width)
    , bits_(bits)
{
}

std::size_t dib_reducer::slot_of(std::uint32_t colour) const noexcept
{
    constexpr std::uint32_t hash_factor = 2654435761U; // Knuth's multiplicative hash
    std::size_t slot = (colour * hash_factor) >> (32 - slot_bits);
    while (slots_[slot].colour != colour && slots_[slot].colour != no_colour)
        slot = (slot + 1) % slots_.size();
    return slot;
}

bool dib_reducer::note(std::uint32_t colour) noexcept
{
    found_colour& slot = slots_[slot_of(colour)];
    if (slot.colour == colour)
        return true;
    if (found_count_ == std::size_t{1} << bits_)
        return false;
    slot = {colour, static_cast<std::uint8_t>(found_count_)};
    found_[found_count_++] = entry_of(colour);
    return true;
}

bool dib_reducer::look_at(const std::uint8_t* pixels) noexcept
{
    std::uint32_t previous = no_colour;
    for (std::int32_t x = 0; x < width_ && exact_; ++x, pixels += 3) {
        const std::uint32_t colour = colour_at(pixels);
        if (colour == previous)
            continue;
        previous = colour;
        exact_ = note(colour);
    }
    return exact_;
}

bool dib_reducer::start() noexcept
{
    return indices_.resize_uninitialized(static_cast<std::size_t>(width_))
        && (exact_ || ditherer_.start(width_, bits_));
}

std::span<const RGBQUAD> dib_reducer::colours() const noexcept
{
    return exact_ ? std::span<const RGBQUAD>(found_).first(found_count_) : ditherer_.colours();
}

void dib_reducer::find_exactly(const std::uint8_t* pixels) noexcept
{
    std::uint32_t previous = no_colour;
    std::uint8_t index = 0;
    for (std::int32_t x = 0; x < width_; ++x, pixels += 3) {
        const std::uint32_t colour = colour_at(pixels);
        if (colour != previous)
            index = slots_[slot_of(colour)].index;
        previous = colour;
        indices_[static_cast<std::size_t>(x)] = index;
    }
}

void dib_reducer::reduce_line(const std::uint8_t* pixels, std::uint8_t* line) noexcept
{
    if (exact_)
        find_exactly(pixels);
    else
        ditherer_.dither_line(pixels, indices_.data());
    write_indices(indices_.data(), line, bits_, width_);
}

} // namespace klv
