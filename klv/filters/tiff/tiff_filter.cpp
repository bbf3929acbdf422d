#include "klv/filters/tiff/tiff_filter.h"

#include "klv/base/byte_reader.h"
#include "klv/bitmaps/dib.h"
#include "klv/filters/raster/imaging_library.h"
#include "klv/filters/tiff/tiff_decoder.h"
#include "klv/filters/tiff/tiff_directory.h"
#include "klv/filters/tiff/tiff_palette.h"
#include "klv/streams/stream.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <new>

namespace klv {

namespace {

constexpr format_identity identity{
    .id = "TIF", .description_resource = 33011, .description = "TIFF Bitmap", .other_extensions = {"TIFF"}};
constexpr std::uint32_t header_size = 8;
constexpr std::uint16_t tiff_version = 42;

bool is_tiff_header(std::span<const std::uint8_t> bytes)
{
    byte_reader in(bytes);
    const std::uint16_t mark = in.u16le();
    const bool little_endian = mark == 0x4949;
    const bool big_endian = mark == 0x4D4D;
    const std::uint16_t version = big_endian ? in.u16be() : in.u16le();
    const std::uint32_t directory = big_endian ? in.u32be() : in.u32le();
    return (little_endian || big_endian) && version == tiff_version && directory >= header_size;
}

// ---- Resolution

struct resolution {
    std::int32_t x;
    std::int32_t y;
};

constexpr double assumed_dpi = 150;
constexpr double greatest_dpi = 32000;
constexpr double dpi_without_unit = 72;
constexpr double centimetres_per_inch = 2.54;

double ratio(const tiff_rational& value) { return static_cast<double>(value.numerator) / value.denominator; }

std::int32_t rounded_dpi(double dpi)
{
    return static_cast<std::int32_t>(std::lround(dpi >= 0.5 && dpi <= greatest_dpi ? dpi : assumed_dpi));
}

/// Dots per inch. Without a unit the resolutions tell only the shape of a pixel.
resolution resolution_of(const tiff_image& image)
{
    const double x = ratio(image.x_resolution), y = ratio(image.y_resolution);
    switch (image.resolution_unit) {
    case tiff_inch:
        return {rounded_dpi(x), rounded_dpi(y)};
    case tiff_centimetre:
        return {rounded_dpi(x * centimetres_per_inch), rounded_dpi(y * centimetres_per_inch)};
    default:
        return {
            rounded_dpi(dpi_without_unit), rounded_dpi(x > 0 ? dpi_without_unit * y / x : dpi_without_unit)};
    }
}

// ---- The bitmap

/// Gives the bitmap the image's size, depth, resolution and colours.
oFILTER_STATUS prepare_bitmap(const tiff_image& image, oDIB& bitmap)
{
    tiff_colours colours;
    if (const auto status = make_colours(image, colours); status != oFILTER_OK)
        return status;
    const auto [x_dpi, y_dpi] = resolution_of(image);
    const oDIBHEADER header(static_cast<std::int32_t>(image.width), static_cast<std::int32_t>(image.length),
        x_dpi, y_dpi, model_of_bits(image.bitmap_depth()));
    const bool prepared = header.Size() != 0 && bitmap.SetHeader(header)
        && bitmap.SetPalette(oDIBPALETTE(colours.entries.data(), colours.count));
    return prepared ? oFILTER_OK : oFILTER_NO_MEMORY;
}

/// All lines of a bitmap, as long as this lives.
class locked_lines {
public:
    explicit locked_lines(oDIB& bitmap)
        : bitmap_(bitmap)
        , locked_(bitmap.LockImageLines(0, bitmap.Height(), &pixels_, oMODEL_RGB24) != 0)
    {
    }
    locked_lines(const locked_lines&) = delete;
    locked_lines& operator=(const locked_lines&) = delete;
    ~locked_lines()
    {
        if (locked_)
            bitmap_.ReleaseImageLines(1);
    }
    [[nodiscard]] bool locked() const { return locked_; }
    /// A line, counted from the top.
    [[nodiscard]] std::span<std::uint8_t> line(std::int32_t row) const
    {
        const std::size_t stride = bitmap_.BytesPerLine();
        return {pixels_ + stride * static_cast<std::size_t>(bitmap_.Height() - 1 - row), stride};
    }

private:
    oDIB& bitmap_;
    std::uint8_t* pixels_ = nullptr;
    bool locked_;
};

oFILTER_STATUS decode_lines(const tiff_image& image, tiff_source& source, oDIB& bitmap, oPROGRESS* progress)
{
    const locked_lines lines(bitmap);
    if (!lines.locked())
        return oFILTER_NO_MEMORY;
    tiff_decoder decoder(image, source);
    for (std::int32_t row = 0; row < bitmap.Height(); ++row) {
        if (const auto status = decoder.next_line(lines.line(row)); status != oFILTER_OK)
            return status;
        if (!progress)
            continue;
        if (progress->Stop())
            return oFILTER_CANCELLED;
        progress->oSet(decoder.position());
    }
    return oFILTER_OK;
}

oFILTER_STATUS decode(tiff_source& source, oDIB& bitmap, oPROGRESS* progress)
{
    tiff_image image;
    if (progress)
        progress->oSet(header_size);
    if (const auto status = read_directory(source, image); status != oFILTER_OK)
        return status;
    if (const auto status = check_image(image, source.size()); status != oFILTER_OK)
        return status;
    if (const auto status = prepare_bitmap(image, bitmap); status != oFILTER_OK)
        return status;
    return decode_lines(image, source, bitmap, progress);
}

/// The failures after which the imaging library is not asked.
bool is_final(oFILTER_STATUS status)
{
    return status == oFILTER_OK || status == oFILTER_UNSUPPORTED || status == oFILTER_CANCELLED;
}

} // namespace

TIFFILTER::TIFFILTER()
    : oBMFILTER(identity, imaging::format_tiff)
{
}

int TIFFILTER::ExportColourDepths(int depth) const
{
    return depth != 4 && oBMFILTER::ExportColourDepths(depth);
}

oFILTER_STATUS TIFFILTER::CheckStream(vARCHIVE& in)
{
    if (!in.IsStream())
        return Recognised(false);
    auto& stream = static_cast<vSTREAM&>(in);
    std::array<std::uint8_t, header_size> bytes{};
    return Recognised(stream.ReadPlain(bytes.data(), header_size) == header_size && is_tiff_header(bytes));
}

oFILTER_STATUS TIFFILTER::Convert(vARCHIVE* in, vARCHIVE* out)
{
    if (!in || !out)
        return SetStatus(oFILTER_READ_ERROR);
    if (!in->IsStream() || !out->IsStream())
        return SetStatus(oFILTER_FAILED);
    return StoreBitmap(static_cast<vSTREAM&>(*in), static_cast<vSTREAM&>(*out));
}

oFILTER_STATUS TIFFILTER::Convert(vSTREAM& in, oDIB& out)
{
    const std::uint32_t start = in.CurrentPos();
    const oFILTER_STATUS status = convert_with_own_decoder(in, out);
    if (is_final(status))
        return SetStatus(status);
    in.MoveFromStart(start);
    return oBMFILTER::Convert(in, out);
}

oFILTER_STATUS TIFFILTER::convert_with_own_decoder(vSTREAM& in, oDIB& out) noexcept
{
    if (progress()) {
        progress()->oFullScale(in.Size());
        progress()->oStart();
    }
    oFILTER_STATUS status = oFILTER_NO_MEMORY;
    try {
        tiff_source source(in);
        status = decode(source, out, progress());
    } catch (const std::bad_alloc&) {
    }
    if (progress())
        progress()->oTerminate();
    return is_final(status) ? status : oFILTER_FAILED;
}

oFILTER_STATUS TIFFILTER::Convert(oDIB& in, vSTREAM& out)
{
    return ConvertBitmap(in, out, imaging::format_tiff);
}

} // namespace klv
