#include "klv/base/byte_writer.h"
#include "klv/formats/packbits.h"
#include "klv/imaging/photoshop_layout.h"
#include "klv/imaging/pixel_lines.h"

#include <algorithm>
#include <vector>

namespace klv::imaging::photoshop {

namespace {

constexpr std::int32_t greatest_side = 30000;
constexpr std::int32_t most_resolution = 0x7FFF;

std::uint16_t mode_of(const bitmap_handle& bitmap)
{
    if (bitmap.bits_per_pixel > 8)
        return mode_rgb;
    return has_grey_colours(bitmap) ? mode_grey : mode_indexed;
}

void write_palette(byte_writer& out, const bitmap_handle& bitmap)
{
    out.u32be(palette_bytes);
    for (const auto channel : {&RGBQUAD::rgbRed, &RGBQUAD::rgbGreen, &RGBQUAD::rgbBlue})
        for (const RGBQUAD& colour : bitmap.colours)
            out.u8(colour.*channel);
}

void write_resources(byte_writer& out, const bitmap_handle& bitmap)
{
    if (bitmap.x_resolution <= 0 || bitmap.y_resolution <= 0) {
        out.u32be(0);
        return;
    }
    byte_writer resource;
    resource.text("8BIM");
    resource.u16be(resolution_resource);
    resource.u16be(0); // no name
    resource.u32be(16);
    for (const std::int32_t resolution : {bitmap.x_resolution, bitmap.y_resolution}) {
        resource.u32be(static_cast<std::uint32_t>(std::min(resolution, most_resolution)) << 16);
        resource.u16be(pixels_per_inch);
        resource.u16be(1); // sizes are shown in inches
    }
    out.u32be(static_cast<std::uint32_t>(resource.size()));
    out.bytes(resource.span());
}

byte_writer sections_before_picture(const bitmap_handle& bitmap, std::uint16_t mode, std::uint16_t channels)
{
    byte_writer out;
    out.text("8BPS");
    out.u16be(plain_version);
    out.fill(6);
    out.u16be(channels);
    out.i32be(bitmap.height);
    out.i32be(bitmap.width);
    out.u16be(8);
    out.u16be(mode);
    if (mode == mode_indexed)
        write_palette(out, bitmap);
    else
        out.u32be(0);
    write_resources(out, bitmap);
    out.u32be(0); // no layers
    out.u16be(compression_runs);
    return out;
}

/// Writes one channel, packed, and adds the packed sizes of its rows.
imaging_result write_channel(
    image_io& out, const bitmap_handle& bitmap, line_source& lines, std::size_t channel, byte_writer& sizes)
{
    const auto width = static_cast<std::size_t>(bitmap.width);
    const bool indexed = bitmap.bits_per_pixel <= 8;
    std::vector<std::uint8_t> pixels(3 * width);
    std::vector<std::uint8_t> samples(width);
    std::vector<std::uint8_t> packed;
    for (std::int32_t y = 0; y < bitmap.height; ++y) {
        const std::uint8_t* const line = lines.line_from_top(y);
        if (!line)
            return imaging_aborted;
        if (indexed) {
            unpack_indices(line, samples.data(), width, bitmap.bits_per_pixel);
        } else {
            expand_to_24(bitmap, line, pixels.data());
            for (std::size_t x = 0; x < width; ++x)
                samples[x] = pixels[3 * x + 2 - channel];
        }
        packed.clear();
        pack_bits(samples, packed);
        sizes.u16be(static_cast<std::uint16_t>(packed.size()));
        if (!out.write(packed))
            return imaging_write_error;
    }
    return imaging_ok;
}

} // namespace

imaging_result save(image_io& out, const bitmap_handle& bitmap, line_source& lines, std::int32_t)
{
    if (bitmap.width > greatest_side || bitmap.height > greatest_side)
        return imaging_unsupported;
    const std::uint16_t mode = mode_of(bitmap);
    const std::uint16_t channels = mode == mode_rgb ? 3 : 1;
    const byte_writer head = sections_before_picture(bitmap, mode, channels);
    byte_writer sizes;
    sizes.fill(std::size_t{2} * channels * static_cast<std::size_t>(bitmap.height));
    if (!out.write(head.span()) || !out.write(sizes.span()))
        return imaging_write_error;
    sizes.clear();
    for (std::size_t channel = 0; channel < channels; ++channel) {
        const imaging_result written = write_channel(out, bitmap, lines, channel, sizes);
        if (written != imaging_ok)
            return written;
    }
    // The sizes are known only now.
    return out.seek(static_cast<std::uint32_t>(head.size())) && out.write(sizes.span()) ? imaging_ok
                                                                                        : imaging_write_error;
}

} // namespace klv::imaging::photoshop
