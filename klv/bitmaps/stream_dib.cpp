#include "klv/bitmaps/stream_dib.h"

#include "klv/base/wrapping.h"
#include "klv/bitmaps/detail/dib_convert.h"
#include "klv/bitmaps/detail/dib_stream.h"
#include "klv/core/rect.h"
#include "klv/streams/memory_stream.h"

#include <algorithm>

namespace klv {

namespace {

/// Bytes that travel at a time when the pixels are copied.
constexpr std::uint32_t piece_size = 70000;

} // namespace

oSTREAMDIB::oSTREAMDIB(int flag) noexcept
    : oDIB(flag)
{
}

oSTREAMDIB::oSTREAMDIB(vSTREAM& stream, int flag) noexcept
    : oDIB(flag)
{
    *this << stream;
}

oSTREAMDIB::oSTREAMDIB(const oDIB& source, int flag) noexcept
    : oDIB(flag)
{
    copy_from(source);
}

oSTREAMDIB::oSTREAMDIB(
    std::int32_t width, std::int32_t height, std::int32_t bits, oCOLOUR_MODEL model, int flag) noexcept
    : oDIB(width, height, storable_depth(bits), model, flag)
{
    (void)make_pixels();
}

oSTREAMDIB::oSTREAMDIB(
    const oDIB& source, oCOLOUR_MODEL model, int smooth, int flag, const vRECT* area) noexcept
    : oDIB(flag)
{
    // Lines count from the bottom.
    const std::int32_t height = source.Height();
    const RECT part = area
        ? RECT{area->Left(), wrap_sub(height, area->Bottom()), area->Right(), wrap_sub(height, area->Top())}
        : RECT{0, 0, source.Width(), height};
    const std::uint16_t bits = std::min<std::uint16_t>(layout_of(model).bits, 24);
    dib_pixels result;
    if (!convert_dib(source, part, wrap_sub(part.right, part.left), wrap_sub(part.bottom, part.top), bits,
            smooth != 0, result))
        return;
    header_ = result.header;
    take_palette(result.colours.span());
    if (!make_pixels() || !write_at(0, result.pixels.data(), header_.Size()))
        make_empty();
}

oSTREAMDIB::oSTREAMDIB(const oSTREAMDIB& other) noexcept
    : oDIB(other.Flag())
{
    copy_from(other);
}

oSTREAMDIB& oSTREAMDIB::operator=(const oSTREAMDIB& other) noexcept
{
    if (this == &other)
        return *this;
    flag_ = other.flag_;
    copy_from(other);
    return *this;
}

oSTREAMDIB::~oSTREAMDIB() = default;

bool oSTREAMDIB::make_pixels() noexcept
{
    pixels_.reset();
    if (header_.Size() == 0)
        return false;
    pixels_.reset(new vMEMSTREAM());
    vBUFFER<std::uint8_t> zeros;
    const std::uint32_t size = header_.Size();
    if (!pixels_ || !zeros.resize(std::min(size, piece_size))) {
        pixels_.reset();
        return false;
    }
    for (std::uint32_t at = 0; at < size; at += piece_size) {
        const std::uint32_t part = std::min(piece_size, size - at);
        if (pixels_->WritePlain(zeros.data(), part) != part) {
            pixels_.reset();
            return false;
        }
    }
    return true;
}

void oSTREAMDIB::make_empty() noexcept
{
    header_ = oDIBHEADER();
    pixels_.reset();
    drop_palette();
}

void oSTREAMDIB::copy_from(const oDIB& source) noexcept
{
    oDIBHEADER header;
    source.GetHeader(header);
    header.Palette(nullptr);
    header_ = header;
    take_palette(source.colours());
    const std::uint32_t stride = BytesPerLine();
    const auto rows_at_a_time
        = static_cast<std::int32_t>(std::max<std::uint32_t>(1, piece_size / std::max(stride, 1U)));
    vBUFFER<std::uint8_t> rows;
    bool done = source.Width() > 0 && make_pixels()
        && rows.resize(std::size_t{stride} * static_cast<std::size_t>(std::min(rows_at_a_time, Height())));
    for (std::int32_t first = 0; done && first < Height();) {
        const std::int32_t count = std::min(rows_at_a_time, Height() - first);
        done = source.GetImageLines(first, count, rows.data(), nullptr)
            && SetImageLines(rows.data(), header_.ColourModel(), first, count);
        first += count;
    }
    if (!done)
        make_empty();
}

bool oSTREAMDIB::read_at(std::uint64_t offset, std::uint8_t* bytes, std::uint32_t count) const noexcept
{
    if (!pixels_ || offset + count > header_.Size())
        return false;
    const auto position = static_cast<std::uint32_t>(offset);
    return pixels_->MoveFromStart(position) == position && pixels_->ReadPlain(bytes, count) == count;
}

bool oSTREAMDIB::write_at(std::uint64_t offset, const std::uint8_t* bytes, std::uint32_t count) noexcept
{
    if (!pixels_ || offset + count > header_.Size())
        return false;
    const auto position = static_cast<std::uint32_t>(offset);
    return pixels_->MoveFromStart(position) == position && pixels_->WritePlain(bytes, count) == count;
}

int oSTREAMDIB::SetHeader(const oDIBHEADER& header) noexcept
{
    const bool same_rows = pixels_ && has_layout_of(header);
    oDIB::SetHeader(header);
    return same_rows || make_pixels();
}

int oSTREAMDIB::SetImageBlock(const std::uint8_t* pixels, oCOLOUR_MODEL, std::int32_t x, std::int32_t y,
    std::int32_t width, std::int32_t height) noexcept
{
    vBUFFER<std::uint8_t> row;
    if (!pixels || !pixels_ || !has_block(x, y, width, height) || !row.resize(BytesPerLine()))
        return 0;
    const auto block_stride
        = static_cast<std::size_t>(dib_stride(static_cast<std::uint32_t>(width), ColourDepth()));
    for (std::int32_t i = 0; i < height; ++i) {
        const std::uint64_t offset = std::uint64_t{BytesPerLine()} * static_cast<std::uint32_t>(y + i);
        if (!read_at(offset, row.data(), BytesPerLine()))
            return 0;
        copy_pixels(
            pixels + block_stride * static_cast<std::size_t>(i), 0, row.data(), x, width, ColourDepth());
        if (!write_at(offset, row.data(), BytesPerLine()))
            return 0;
    }
    return 1;
}

int oSTREAMDIB::GetImageBlock(std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
    std::uint8_t* pixels, oCOLOUR_MODEL* model) const noexcept
{
    vBUFFER<std::uint8_t> row;
    if (!pixels || !pixels_ || !has_block(x, y, width, height) || !row.resize(BytesPerLine()))
        return 0;
    const auto block_stride
        = static_cast<std::size_t>(dib_stride(static_cast<std::uint32_t>(width), ColourDepth()));
    std::fill_n(pixels, block_stride * static_cast<std::size_t>(height), std::uint8_t{0});
    for (std::int32_t i = 0; i < height; ++i) {
        const std::uint64_t offset = std::uint64_t{BytesPerLine()} * static_cast<std::uint32_t>(y + i);
        if (!read_at(offset, row.data(), BytesPerLine()))
            return 0;
        copy_pixels(
            row.data(), x, pixels + block_stride * static_cast<std::size_t>(i), 0, width, ColourDepth());
    }
    if (model)
        *model = header_.ColourModel();
    return 1;
}

int oSTREAMDIB::SetImageLines(
    const std::uint8_t* pixels, oCOLOUR_MODEL, std::int32_t first, std::int32_t count) noexcept
{
    if (!pixels || !has_lines(first, count))
        return 0;
    return write_at(std::uint64_t{BytesPerLine()} * static_cast<std::uint32_t>(first), pixels,
        BytesPerLine() * static_cast<std::uint32_t>(count));
}

int oSTREAMDIB::GetImageLines(
    std::int32_t first, std::int32_t count, std::uint8_t* pixels, oCOLOUR_MODEL* model) const noexcept
{
    if (!pixels || !has_lines(first, count))
        return 0;
    if (model)
        *model = header_.ColourModel();
    return read_at(std::uint64_t{BytesPerLine()} * static_cast<std::uint32_t>(first), pixels,
        BytesPerLine() * static_cast<std::uint32_t>(count));
}

int oSTREAMDIB::LockImageLines(std::int32_t, std::int32_t, std::uint8_t** pixels, oCOLOUR_MODEL) noexcept
{
    if (pixels)
        *pixels = nullptr;
    return 0;
}

int oSTREAMDIB::ReleaseImageLines(int) noexcept { return 0; }

void oSTREAMDIB::operator<<(vSTREAM& stream) noexcept
{
    read_bitmap bitmap;
    if (!read_dib(stream, bitmap)) {
        make_empty();
        return;
    }
    header_ = bitmap.header;
    take_palette(bitmap.colours.span());
    if (!make_pixels() || !write_at(0, bitmap.pixels.data(), header_.Size()))
        make_empty();
}

void oSTREAMDIB::operator>>(vSTREAM& stream) const noexcept
{
    write_dib_header(stream, header_, colours());
    vBUFFER<std::uint8_t> piece;
    if (!piece.resize(std::min(header_.Size(), piece_size)))
        return;
    for (std::uint32_t at = 0; at < header_.Size(); at += piece_size) {
        const std::uint32_t part = std::min(piece_size, header_.Size() - at);
        if (!read_at(at, piece.data(), part))
            return;
        // Plain, because readers take compressed 24-bit pixels for difference-coded ones.
        stream.WritePlain(piece.data(), part);
    }
}

} // namespace klv
