#include "klv/filters/wmf/wmf_transparent_bitmap.h"

#include "klv/base/byte_reader.h"
#include "klv/bitmaps/dib_context.h"
#include "klv/filters/windows/canvas_mapping.h"
#include "klv/filters/windows/windows_attributes.h"
#include "klv/metafiles/metafile.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace klv {
namespace {

// Divides upwards; the writer rounds positions down, so this finds the pixel that it meant.
std::int32_t pixel_of(std::int64_t distance, std::int64_t pixels, std::int64_t units)
{
    if (units <= 0)
        return 0;
    const std::int64_t product = distance * pixels;
    const std::int64_t pixel = product > 0 ? (product + units - 1) / units : product / units;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(pixel, INT32_MIN, INT32_MAX));
}

vRECT read_rect(byte_reader& in)
{
    const auto left = in.i32le();
    const auto top = in.i32le();
    const auto right = in.i32le();
    const auto bottom = in.i32le();
    return {left, top, right, bottom};
}

// A comment of the given size whose 24-byte text field holds exactly text.
bool is_comment(std::span<const std::uint8_t> comment, std::size_t size, std::string_view text)
{
    constexpr std::size_t text_field = 24;
    static_assert(text_field > 17);
    return comment.size() == size && std::memcmp(comment.data(), text.data(), text.size()) == 0
        && comment[text.size()] == 0;
}

std::uint8_t index_of_transparent(
    std::span<const RGBQUAD> palette, std::uint32_t colour, std::int32_t threshold)
{
    const int red = static_cast<int>(colour & 0xFF);
    const int green = static_cast<int>(colour >> 8 & 0xFF);
    const int blue = static_cast<int>(colour >> 16 & 0xFF);
    const auto worst = [&](const RGBQUAD& q) {
        return std::max({std::abs(q.rgbRed - red), std::abs(q.rgbGreen - green), std::abs(q.rgbBlue - blue)});
    };
    std::size_t nearest = 0;
    for (std::size_t i = 0; i < palette.size(); ++i) {
        if (worst(palette[i]) < threshold)
            return static_cast<std::uint8_t>(i);
        if (worst(palette[i]) < worst(palette[nearest]))
            nearest = i;
    }
    return static_cast<std::uint8_t>(nearest);
}

} // namespace

bool wmf_transparent_bitmap::start(std::span<const std::uint8_t> comment)
{
    constexpr std::size_t size = 68;
    constexpr std::size_t text_field = 24;
    // A comment of a few bytes may not claim more memory than this.
    constexpr std::int64_t largest_bitmap = 16 << 20;
    if (!is_comment(comment, size, "ZYNStartTransBlit"))
        return false;

    byte_reader in(comment.subspan(text_field));
    colour_ = in.u32le();
    threshold_ = in.i32le();
    const std::uint32_t bits = in.u32le();
    source_ = read_rect(in);
    destination_ = read_rect(in);
    bitmap_.reset();
    first_piece_ = true;
    const std::int64_t width = std::int64_t{source_.Right()} - source_.Left();
    const std::int64_t height = std::int64_t{source_.Bottom()} - source_.Top();
    const bool sized = width > 0 && height > 0 && width <= largest_bitmap && height <= largest_bitmap
        && width * height * bits / 8 <= largest_bitmap;
    if (!sized || (bits != 8 && bits != 24))
        return true;
    bitmap_.reset(new oMEMDIB(static_cast<std::int32_t>(width), static_cast<std::int32_t>(height),
        static_cast<std::int32_t>(bits), model_of_bits(bits), 0));
    if (bitmap_ && !bitmap_->HasPixels())
        bitmap_.reset();
    return true;
}

void wmf_transparent_bitmap::fill_with_transparent_colour(const oMEMDIB& piece)
{
    std::array<std::uint8_t, 3> bgr{static_cast<std::uint8_t>(colour_ >> 16),
        static_cast<std::uint8_t>(colour_ >> 8), static_cast<std::uint8_t>(colour_)};
    std::uint8_t index = 0;
    if (bitmap_->ColourDepth() == 8) {
        oDIBPALETTE* palette = nullptr;
        piece.GetPalette(&palette);
        if (palette)
            bitmap_->SetPalette(*palette);
        index = index_of_transparent(bitmap_->colours(), colour_, threshold_);
    }
    for (std::int32_t row = 0; row < bitmap_->Height(); ++row) {
        const auto line = bitmap_->line(row);
        if (bitmap_->ColourDepth() == 8)
            std::fill(line.begin(), line.end(), index);
        else
            for (std::size_t i = 0; i + 3 <= line.size(); i += 3)
                std::copy(bgr.begin(), bgr.end(), line.begin() + static_cast<std::ptrdiff_t>(i));
    }
}

void wmf_transparent_bitmap::add_piece(
    const oMEMDIB& piece, std::int32_t x, std::int32_t y, std::int32_t height)
{
    if (first_piece_)
        fill_with_transparent_colour(piece);
    first_piece_ = false;
    if (piece.ColourDepth() != bitmap_->ColourDepth())
        return;

    // The writer gives a piece by its lower edge and a negative height; rows are stored bottom row first.
    const std::int64_t bottom = height > 0 ? std::int64_t{y} + height : y;
    const std::int64_t column
        = pixel_of(std::int64_t{x} - destination_.Left(), bitmap_->Width(), destination_.Width());
    const std::int64_t row
        = pixel_of(std::int64_t{destination_.Bottom()} - bottom, bitmap_->Height(), destination_.Height());
    const std::int64_t pixel_bytes = bitmap_->ColourDepth() / 8;
    const std::int64_t first = std::max<std::int64_t>(0, -column);
    const std::int64_t last = std::min<std::int64_t>(piece.Width(), bitmap_->Width() - column);
    for (std::int32_t r = 0; r < piece.Height() && first < last; ++r) {
        if (row + r < 0 || row + r >= bitmap_->Height())
            continue;
        const auto source = piece.line(r);
        const auto target = bitmap_->line(static_cast<std::int32_t>(row + r));
        std::copy(source.begin() + first * pixel_bytes, source.begin() + last * pixel_bytes,
            target.begin() + (column + first) * pixel_bytes);
    }
}

bool wmf_transparent_bitmap::end(
    std::span<const std::uint8_t> comment, vMETAFILE& picture, const canvas_mapping& mapping)
{
    constexpr std::size_t size = 24;
    if (!is_comment(comment, size, "ZYNEndTransBlit"))
        return false;
    if (!bitmap_)
        return true;
    const vRECT target(mapping.map(destination_.Left(), destination_.Top()),
        mapping.map(destination_.Right(), destination_.Bottom()));
    const vCOLOUR transparent = colour_of(colour_);
    oDIBCONTEXT context(bitmap_->Width(), bitmap_->Height(), &target, &source_, nullptr, nullptr,
        &transparent, 0.0, 0, 0, 1, threshold_);
    picture.DrawDIB(*bitmap_, context, nullptr, 0);
    bitmap_.reset();
    return true;
}

} // namespace klv
