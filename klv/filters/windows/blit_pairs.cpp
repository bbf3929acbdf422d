#include "klv/filters/windows/blit_pairs.h"

#include "klv/bitmaps/dib_context.h"
#include "klv/colour/colour.h"
#include "klv/metafiles/metafile.h"

#include <algorithm>
#include <array>
#include <utility>

namespace klv {
namespace {

// Key colours are matched this closely (see vIMAGECOLOUR).
constexpr std::int32_t key_threshold = 1;

void draw_bitmap(vMETAFILE& picture, const oMEMDIB& bitmap, const vRECT& target, const vCOLOUR* transparent)
{
    const vRECT source(0, 0, bitmap.Width(), bitmap.Height());
    oDIBCONTEXT context(bitmap.Width(), bitmap.Height(), &target, &source, nullptr, nullptr, transparent, 0.0,
        0, 0, transparent ? 1 : 0, key_threshold);
    picture.DrawDIB(bitmap, context, nullptr, 0);
}

void invert(oMEMDIB& bitmap)
{
    oDIBPALETTE* palette = nullptr;
    if (bitmap.ColourDepth() <= 8 && bitmap.GetPalette(&palette) && palette) {
        oDIBPALETTE inverted(*palette);
        for (std::uint16_t i = 0; i < inverted.GetNumColours(); ++i) {
            auto& c = inverted.GetRgbQuad()[i];
            c = {static_cast<std::uint8_t>(~c.rgbBlue), static_cast<std::uint8_t>(~c.rgbGreen),
                static_cast<std::uint8_t>(~c.rgbRed), 0};
        }
        bitmap.SetPalette(inverted);
        return;
    }
    for (std::int32_t row = 0; row < bitmap.Height(); ++row)
        for (auto& byte : bitmap.line(row))
            byte = static_cast<std::uint8_t>(~byte);
}

oMEMDIB in_true_colour(const oMEMDIB& bitmap)
{
    return oMEMDIB(bitmap, static_cast<std::uint32_t>(bitmap.Width()),
        static_cast<std::uint32_t>(bitmap.Height()), 24, 0, 0);
}

bool is_white(const std::uint8_t* bgr) { return bgr[0] == 255 && bgr[1] == 255 && bgr[2] == 255; }

} // namespace

bool blit_pairs::draws_on_pending(const oMEMDIB& bitmap, const vRECT& target) const
{
    const oMEMDIB* pending = mask_ ? mask_.get() : image_.get();
    return pending && target == target_ && pending->Width() == bitmap.Width()
        && pending->Height() == bitmap.Height();
}

void blit_pairs::draw(
    vMETAFILE& picture, std::unique_ptr<oMEMDIB> bitmap, const vRECT& target, ternary_operation rop)
{
    if (!draws_on_pending(*bitmap, target))
        flush(picture);
    const bool combines = rop == ternary_operation::source_invert || rop == ternary_operation::source_paint;
    if (combines && mask_) {
        draw_through_mask(picture, *bitmap);
        mask_.reset();
        image_.reset();
        return;
    }
    target_ = target;
    switch (rop) {
    case ternary_operation::source_and:
        if (mask_)
            flush(picture);
        mask_ = std::move(bitmap);
        return;
    case ternary_operation::source_invert:
        image_ = std::move(bitmap);
        return;
    case ternary_operation::source_paint: {
        flush(picture);
        const vCOLOUR black(0, 0, 0);
        draw_bitmap(picture, *bitmap, target, &black);
        return;
    }
    case ternary_operation::merge_paint: {
        flush(picture);
        invert(*bitmap);
        const vCOLOUR black(0, 0, 0);
        draw_bitmap(picture, *bitmap, target, &black);
        return;
    }
    case ternary_operation::not_source_copy:
        flush(picture);
        invert(*bitmap);
        draw_bitmap(picture, *bitmap, target, nullptr);
        return;
    default:
        flush(picture);
        draw_bitmap(picture, *bitmap, target, nullptr);
        return;
    }
}

// The image where the mask is not white; elsewhere a colour that the image does not need.
void blit_pairs::draw_through_mask(vMETAFILE& picture, const oMEMDIB& image)
{
    constexpr std::array<std::uint8_t, 3> key{1, 254, 2};
    oMEMDIB result = in_true_colour(image);
    const oMEMDIB mask = in_true_colour(*mask_);
    if (!result.HasPixels() || !mask.HasPixels())
        return;
    for (std::int32_t row = 0; row < result.Height(); ++row) {
        const auto target = result.line(row);
        const auto source = mask.line(row);
        for (std::int32_t x = 0; x < result.Width(); ++x)
            if (is_white(&source[3 * static_cast<std::size_t>(x)]))
                std::copy(key.begin(), key.end(), &target[3 * static_cast<std::size_t>(x)]);
    }
    const vCOLOUR transparent(key[2], key[1], key[0]);
    draw_bitmap(picture, result, target_, &transparent);
}

void blit_pairs::flush(vMETAFILE& picture)
{
    if (mask_) {
        const vCOLOUR white(255, 255, 255);
        draw_bitmap(picture, *mask_, target_, &white);
    } else if (image_) {
        const vCOLOUR black(0, 0, 0);
        draw_bitmap(picture, *image_, target_, &black);
    }
    mask_.reset();
    image_.reset();
}

} // namespace klv
