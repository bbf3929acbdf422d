#pragma once

#include "klv/base/types.h"

#include <cstdint>
#include <span>

namespace klv {

class colour_matcher;

/// What a line converter needs beside the pixels.
struct dib_line_colours {
    std::span<const RGBQUAD> source; ///< colour table of the source; empty above 8 bits
    const colour_matcher* destination = nullptr; ///< finds 8-bit indices for 24-bit pixels
};

/// Unpacks a source line of width pixels into 8-bit indices or 24-bit pixels.
using dib_read_routine = void (*)(const std::uint8_t* source, std::uint8_t* line, std::int32_t width,
    const dib_line_colours& colours) noexcept;
/// Stores an unpacked line of width pixels.
using dib_write_routine
    = void (*)(const std::uint8_t* line, std::uint8_t* destination, std::int32_t width) noexcept;

void ReadLine1To8(const std::uint8_t*, std::uint8_t*, std::int32_t, const dib_line_colours&) noexcept;
void ReadLine4To8(const std::uint8_t*, std::uint8_t*, std::int32_t, const dib_line_colours&) noexcept;
void ReadLine8To8(const std::uint8_t*, std::uint8_t*, std::int32_t, const dib_line_colours&) noexcept;
/// Indices past the colour table read as black.
void ReadLine8To24(const std::uint8_t*, std::uint8_t*, std::int32_t, const dib_line_colours&) noexcept;
void ReadLine24To8(const std::uint8_t*, std::uint8_t*, std::int32_t, const dib_line_colours&) noexcept;
void ReadLine24To24(const std::uint8_t*, std::uint8_t*, std::int32_t, const dib_line_colours&) noexcept;
void WriteLine8(const std::uint8_t*, std::uint8_t*, std::int32_t) noexcept;
void WriteLine24(const std::uint8_t*, std::uint8_t*, std::int32_t) noexcept;

/// Unpacks a line of 1, 4, 8, 16 (5-5-5), 24 or 32 bits into 24-bit pixels; other depths give black.
void read_line_as_24(std::span<const std::uint8_t> source, std::uint32_t bits, std::uint8_t* line,
    std::int32_t width, std::span<const RGBQUAD> colours) noexcept;
/// Unpacks a line of 1, 4 or 8 bits into one index a byte, and packs one.
void read_line_as_indices(
    const std::uint8_t* source, std::uint32_t bits, std::uint8_t* line, std::int32_t width) noexcept;
void write_indices(
    const std::uint8_t* line, std::uint8_t* destination, std::uint32_t bits, std::int32_t width) noexcept;

/// Copies width pixels between positions of two lines of the same depth.
void copy_pixels(const std::uint8_t* source, std::int32_t source_x, std::uint8_t* destination,
    std::int32_t destination_x, std::int32_t width, std::uint32_t bits) noexcept;

} // namespace klv
