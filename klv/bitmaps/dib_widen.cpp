#include "klv/bitmaps/dib_widen.h"

#include "klv/bitmaps/detail/dib_stream.h"
#include "klv/bitmaps/dib_rows.h"
#include "klv/streams/stream.h"

#include <algorithm>

namespace klv {

widened_dib::widened_dib(const oDIB& source, std::uint16_t bits) noexcept
    : oDIB(source.Flag())
    , source_(source)
{
    oDIBHEADER from;
    source.GetHeader(from);
    header_ = oDIBHEADER(source.Width(), source.Height(), 0, 0, model_of_bits(bits));
    header_.info().biXPelsPerMeter = from.info().biXPelsPerMeter;
    header_.info().biYPelsPerMeter = from.info().biYPelsPerMeter;
    if (bits <= 8)
        take_palette(source.colours());
}

int widened_dib::GetImageLines(
    std::int32_t first, std::int32_t count, std::uint8_t* pixels, oCOLOUR_MODEL* model) const noexcept
{
    if (!pixels || !has_lines(first, count) || !source_line_.resize(source_.BytesPerLine())
        || !unpacked_.resize(static_cast<std::size_t>(Width())))
        return 0;
    for (std::int32_t y = first; y < first + count; ++y, pixels += BytesPerLine()) {
        if (!source_.GetImageLines(y, 1, source_line_.data(), nullptr))
            return 0;
        std::fill_n(pixels, BytesPerLine(), std::uint8_t{0});
        widen(pixels);
    }
    if (model)
        *model = header_.ColourModel();
    return 1;
}

void widened_dib::widen(std::uint8_t* line) const noexcept
{
    if (ColourDepth() > 8)
        return read_line_as_24(source_line_.span(), source_.ColourDepth(), line, Width(), source_.colours());
    read_line_as_indices(source_line_.data(), source_.ColourDepth(), unpacked_.data(), Width());
    write_indices(unpacked_.data(), line, ColourDepth(), Width());
}

void widened_dib::operator>>(vSTREAM& stream) const noexcept
{
    write_dib_header(stream, header_, colours());
    vBUFFER<std::uint8_t> line;
    if (!line.resize(BytesPerLine()))
        return;
    for (std::int32_t y = 0; y < Height() && GetImageLines(y, 1, line.data(), nullptr); ++y)
        stream.WriteBlock(line.data(), BytesPerLine());
}

} // namespace klv
