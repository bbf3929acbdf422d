#include "klv/filters/gif/gif_filter.h"

#include "klv/base/byte_writer.h"
#include "klv/base/memory.h"
#include "klv/bitmaps/memory_dib.h"
#include "klv/filters/gif/gif_decoder.h"
#include "klv/filters/gif/gif_encoder.h"
#include "klv/filters/gif/gif_outside_reader.h"
#include "klv/filters/raster/imaging_library.h"
#include "klv/formats/dib_header.h"
#include "klv/streams/stream.h"

#include <array>
#include <new>

namespace klv {

namespace {

constexpr format_identity identity{.id = "GIF", .description_resource = 33007, .description = "GIF Bitmap "};
constexpr int most_colour_bits = 8;

constexpr std::uint32_t bytes_per_colour = 4;

/// File header, info header and colour table of a Windows bitmap file, which has as many colours as the GIF.
void write_bitmap_header(const gif_picture& picture, std::uint32_t pixel_bytes, byte_writer& out)
{
    const std::uint32_t offset
        = dib_file_header::stored_size + dib_header::info_size + bytes_per_colour * picture.colour_count();
    dib_file_header{offset + pixel_bytes, offset}.write(out);
    dib_header{.width = picture.width,
        .height = picture.height,
        .bits = picture.bitmap_bits(),
        .x_pixels_per_metre = picture.horizontal_resolution,
        .y_pixels_per_metre = picture.vertical_resolution,
        .colours_used = picture.colour_count()}
        .write(out);
    write_colour_table(out, picture.colours());
}

bool write_all(vSTREAM& out, std::span<const std::uint8_t> bytes)
{
    return out.WritePlain(bytes.data(), static_cast<std::uint32_t>(bytes.size())) == bytes.size();
}

oFILTER_STATUS write_bitmap_file(const gif_picture& picture, const oMEMDIB& bitmap, vSTREAM& out)
try {
    byte_writer header(vMemResource());
    write_bitmap_header(picture, bitmap.InfoHeader().biSizeImage, header);
    out.MoveFromStart(0);
    bool written = write_all(out, header.span());
    for (std::int32_t line = 0; written && line < bitmap.Height(); ++line)
        written = write_all(out, bitmap.line(line));
    return written ? oFILTER_OK : oFILTER_WRITE_ERROR;
} catch (const std::bad_alloc&) {
    return oFILTER_NO_MEMORY;
}

} // namespace

GIFFILTER::GIFFILTER()
    : oBMFILTER(identity, imaging::format_gif)
{
    SetMaxColourDepth(most_colour_bits);
}

oFILTER_STATUS GIFFILTER::CheckStream(vARCHIVE& in)
{
    if (!in.IsStream())
        return Recognised(false);
    auto& stream = static_cast<vSTREAM&>(in);
    std::array<std::uint8_t, 3> start{};
    const bool read = stream.ReadPlain(start.data(), start.size()) == start.size();
    stream.MoveFromStart(0);
    return Recognised(read && start[0] == 'G' && start[1] == 'I' && start[2] == 'F');
}

oFILTER_STATUS GIFFILTER::Convert(vSTREAM& in, oDIB& out)
{
    const oFILTER_STATUS by_module = oBMFILTER::Convert(in, out);
    if (by_module == oFILTER_OK || by_module == oFILTER_CANCELLED)
        return by_module;
    if (read_gif_outside(in, out) == oFILTER_OK)
        return SetStatus(oFILTER_OK);
    in.MoveFromStart(0);
    gif_picture picture;
    const oFILTER_STATUS found = read_gif_picture(in, picture);
    return SetStatus(found == oFILTER_OK ? read_gif_pixels(in, picture, out, progress()) : found);
}

oFILTER_STATUS GIFFILTER::Convert(vARCHIVE* in, vARCHIVE* out)
{
    if (!in || !out)
        return SetStatus(oFILTER_READ_ERROR);
    if (!in->IsStream())
        return SetStatus(oFILTER_UNSUPPORTED);
    if (!out->IsStream())
        return SetStatus(oFILTER_FAILED);
    auto& source = static_cast<vSTREAM&>(*in);
    auto& target = static_cast<vSTREAM&>(*out);
    {
        oMEMDIB bitmap;
        const oFILTER_STATUS by_module = oBMFILTER::Convert(source, bitmap);
        if (by_module == oFILTER_CANCELLED)
            return by_module;
        if (by_module == oFILTER_OK) {
            target.MoveFromStart(0);
            bitmap >> target;
            return by_module;
        }
    }
    return SetStatus(DoConvert(source, target));
}

oFILTER_STATUS GIFFILTER::DoConvert(vSTREAM& in, vSTREAM& out)
{
    in.MoveFromStart(0);
    gif_picture picture;
    const oFILTER_STATUS found = read_gif_picture(in, picture);
    if (found != oFILTER_OK)
        return found;
    oMEMDIB bitmap;
    const oFILTER_STATUS read = read_gif_pixels(in, picture, bitmap, progress());
    if (!bitmap.HasPixels() || read == oFILTER_CANCELLED)
        return read;
    const oFILTER_STATUS written = write_bitmap_file(picture, bitmap, out);
    return read == oFILTER_OK ? written : read;
}

oFILTER_STATUS GIFFILTER::Convert(oDIB& in, vSTREAM& out)
{
    const std::uint32_t start = out.CurrentPos();
    if (ConvertBitmap(in, out, imaging::format_gif) == oFILTER_OK)
        return oFILTER_OK;
    out.MoveFromStart(start);
    return PrivateConvert(in, out);
}

oFILTER_STATUS GIFFILTER::PrivateConvert(oDIB& in, vSTREAM& out)
{
    return SetStatus(write_gif(in, out, progress()));
}

} // namespace klv
