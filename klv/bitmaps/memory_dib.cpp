#include "klv/bitmaps/memory_dib.h"

#include "klv/bitmaps/detail/dib_convert.h"
#include "klv/bitmaps/detail/dib_distort.h"
#include "klv/bitmaps/detail/dib_stream.h"
#include "klv/bitmaps/dib_context.h"

#include <cstring>

namespace klv {

oMEMDIB::oMEMDIB(int flag) noexcept
    : oDIB(flag)
{
}

oMEMDIB::oMEMDIB(
    std::int32_t width, std::int32_t height, std::int32_t bits, oCOLOUR_MODEL model, int flag) noexcept
    : oDIB(width, height, storable_depth(bits), model, flag)
{
    (void)make_pixels();
}

oMEMDIB::oMEMDIB(vSTREAM& stream, int flag) noexcept
    : oDIB(flag)
{
    *this << stream;
}

oMEMDIB::oMEMDIB(const BITMAPINFO* packed, int flag) noexcept
    : oDIB(flag)
{
    read_bitmap bitmap;
    if (packed && read_packed_dib(*packed, bitmap))
        take(bitmap.header, bitmap.colours.span(), std::move(bitmap.pixels));
}

oMEMDIB::oMEMDIB(const oDIB& source, int flag) noexcept
    : oDIB(flag)
{
    copy_from(source);
}

oMEMDIB::oMEMDIB(
    const oDIB& source, std::uint32_t width, std::uint32_t height, int bits, int smooth, int flag) noexcept
    : oDIB(flag)
{
    const std::uint64_t wanted_width = width != 0 ? width : static_cast<std::uint32_t>(source.Width());
    const std::uint64_t wanted_height = height != 0 ? height : static_cast<std::uint32_t>(source.Height());
    const int wanted_bits = bits != 0 ? bits : source.ColourDepth() <= 8 ? source.ColourDepth() : 24;
    dib_pixels result;
    if (wanted_width <= INT32_MAX && wanted_height <= INT32_MAX && storable_depth(wanted_bits) != 0
        && convert_dib(source, {0, 0, source.Width(), source.Height()},
            static_cast<std::int32_t>(wanted_width), static_cast<std::int32_t>(wanted_height),
            static_cast<std::uint16_t>(wanted_bits), smooth != 0, result))
        take(result.header, result.colours.span(), std::move(result.pixels));
}

oMEMDIB::oMEMDIB(const oDIB& source, const vRECT& source_rect, const vRECT& destination_rect,
    const vRECT* clip, const IDistort* distort, oCOLOUR_MODEL model, const vTILEINFO& tiles,
    int limit) noexcept
    : oDIB(source.Flag())
{
    dib_pixels result;
    if (render_distorted(
            {source, source_rect, destination_rect, clip, distort, model, &tiles, limit}, result))
        take(result.header, result.colours.span(), std::move(result.pixels));
}

oMEMDIB::oMEMDIB(const oDIB& source, const vRECT& source_rect, const vRECT& destination_rect,
    const vRECT* clip, int flip_h, int flip_v, double angle, oCOLOUR_MODEL model) noexcept
    : oDIB(source.Flag())
{
    const oDIBCONTEXT turned(source.Width(), source.Height(), &destination_rect, &source_rect, angle, flip_h,
        flip_v, vIMAGECOLOUR(), vTILEINFO());
    dib_pixels result;
    if (render_distorted(
            {source, source_rect, destination_rect, clip, turned.GetDistort(), model, nullptr, 0}, result))
        take(result.header, result.colours.span(), std::move(result.pixels));
}

oMEMDIB::oMEMDIB(const oMEMDIB& other) noexcept
    : oDIB(other.Flag())
{
    copy_from(other);
}

oMEMDIB& oMEMDIB::operator=(const oMEMDIB& other) noexcept
{
    if (this == &other)
        return *this;
    flag_ = other.flag_;
    copy_from(other);
    return *this;
}

bool oMEMDIB::make_pixels() noexcept
{
    pixels_.release();
    bytes_read_ = 0;
    locked_ = false;
    return header_.Size() != 0 && pixels_.resize(header_.Size());
}

void oMEMDIB::make_empty() noexcept
{
    header_ = oDIBHEADER();
    pixels_.release();
    bytes_read_ = 0;
    locked_ = false;
    drop_palette();
}

void oMEMDIB::take(
    const oDIBHEADER& header, std::span<const RGBQUAD> colours, vBUFFER<std::uint8_t>&& pixels) noexcept
{
    header_ = header;
    header_.Palette(nullptr);
    pixels_ = std::move(pixels);
    bytes_read_ = header.Size();
    locked_ = false;
    take_palette(colours);
}

void oMEMDIB::copy_from(const oDIB& source) noexcept
{
    vBUFFER<std::uint8_t> copy;
    if (source.Width() <= 0 || !copy.resize_uninitialized(source.InfoHeader().biSizeImage)
        || !source.GetImageLines(0, source.Height(), copy.data(), nullptr)) {
        make_empty();
        return;
    }
    oDIBHEADER header;
    source.GetHeader(header);
    take(header, source.colours(), std::move(copy));
}

int oMEMDIB::SetHeader(const oDIBHEADER& header) noexcept
{
    const bool same_rows = !pixels_.empty() && has_layout_of(header);
    oDIB::SetHeader(header);
    return same_rows || make_pixels();
}

int oMEMDIB::SetImageBlock(const std::uint8_t* pixels, oCOLOUR_MODEL, std::int32_t x, std::int32_t y,
    std::int32_t width, std::int32_t height) noexcept
{
    if (!pixels || pixels_.empty() || !has_block(x, y, width, height))
        return 0;
    const auto block_stride
        = static_cast<std::size_t>(dib_stride(static_cast<std::uint32_t>(width), ColourDepth()));
    for (std::int32_t row = 0; row < height; ++row)
        copy_pixels(pixels + block_stride * static_cast<std::size_t>(row), 0, line(y + row).data(), x, width,
            ColourDepth());
    return 1;
}

int oMEMDIB::GetImageBlock(std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
    std::uint8_t* pixels, oCOLOUR_MODEL* model) const noexcept
{
    if (!pixels || pixels_.empty() || !has_block(x, y, width, height))
        return 0;
    const auto block_stride
        = static_cast<std::size_t>(dib_stride(static_cast<std::uint32_t>(width), ColourDepth()));
    std::memset(pixels, 0, block_stride * static_cast<std::size_t>(height));
    for (std::int32_t row = 0; row < height; ++row)
        copy_pixels(line(y + row).data(), x, pixels + block_stride * static_cast<std::size_t>(row), 0, width,
            ColourDepth());
    if (model)
        *model = header_.ColourModel();
    return 1;
}

int oMEMDIB::SetImageLines(
    const std::uint8_t* pixels, oCOLOUR_MODEL, std::int32_t first, std::int32_t count) noexcept
{
    if (!pixels || pixels_.empty() || !has_lines(first, count))
        return 0;
    const std::size_t stride = BytesPerLine();
    std::memcpy(pixels_.data() + stride * static_cast<std::size_t>(first), pixels,
        stride * static_cast<std::size_t>(count));
    return 1;
}

int oMEMDIB::GetImageLines(
    std::int32_t first, std::int32_t count, std::uint8_t* pixels, oCOLOUR_MODEL* model) const noexcept
{
    if (!pixels || pixels_.empty() || !has_lines(first, count))
        return 0;
    const std::size_t stride = BytesPerLine();
    std::memcpy(pixels, pixels_.data() + stride * static_cast<std::size_t>(first),
        stride * static_cast<std::size_t>(count));
    if (model)
        *model = header_.ColourModel();
    return 1;
}

int oMEMDIB::LockImageLines(
    std::int32_t first, std::int32_t count, std::uint8_t** pixels, oCOLOUR_MODEL) noexcept
{
    if (!pixels)
        return 0;
    *pixels = nullptr;
    if (locked_ || pixels_.empty() || !has_lines(first, count))
        return 0;
    *pixels = pixels_.data() + std::size_t{BytesPerLine()} * static_cast<std::size_t>(first);
    locked_ = true;
    return 1;
}

int oMEMDIB::ReleaseImageLines(int) noexcept
{
    if (!locked_)
        return 0;
    locked_ = false;
    return 1;
}

void oMEMDIB::operator<<(vSTREAM& stream) noexcept
{
    read_bitmap bitmap;
    if (!read_dib(stream, bitmap)) {
        make_empty();
        return;
    }
    take(bitmap.header, bitmap.colours.span(), std::move(bitmap.pixels));
    bytes_read_ = bitmap.bytes_read;
}

void oMEMDIB::operator>>(vSTREAM& stream) const noexcept
{
    write_dib_header(stream, header_, colours());
    write_dib_pixels(stream, header_, pixels_.span());
}

int oMEMDIB::HasPixels() const noexcept { return !pixels_.empty(); }

int oMEMDIB::Reduce(int bits) noexcept
{
    if (pixels_.empty() || locked_ || (bits != 1 && bits != 4 && bits != 8))
        return 0;
    dib_pixels result;
    result.header = oDIBHEADER(Width(), Height(), 0, 0, model_of_bits(static_cast<unsigned>(bits)));
    result.header.info().biXPelsPerMeter = header_.info().biXPelsPerMeter;
    result.header.info().biYPelsPerMeter = header_.info().biYPelsPerMeter;
    result.pixels.swap(pixels_);
    if (!reduce_in_place(header_, colours(), result)) {
        pixels_.swap(result.pixels);
        return 0;
    }
    take(result.header, result.colours.span(), std::move(result.pixels));
    return 1;
}

std::span<const std::uint8_t> oMEMDIB::line(std::int32_t index) const noexcept
{
    if (pixels_.empty() || !has_lines(index, 1))
        return {};
    return pixels_.span().subspan(
        std::size_t{BytesPerLine()} * static_cast<std::size_t>(index), BytesPerLine());
}

std::span<std::uint8_t> oMEMDIB::line(std::int32_t index) noexcept
{
    if (pixels_.empty() || !has_lines(index, 1))
        return {};
    return pixels_.span().subspan(
        std::size_t{BytesPerLine()} * static_cast<std::size_t>(index), BytesPerLine());
}

} // namespace klv
