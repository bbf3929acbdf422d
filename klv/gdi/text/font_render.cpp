#include "klv/gdi/text.h"
#include "klv/gdi/text/font.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace klv::gdi {
namespace {

// Glyphs of larger fonts are rendered each time, as far as they can be seen.
constexpr double largest_em_kept = 400;
constexpr std::size_t largest_store = std::size_t{512} << 10;
// Slant of an upright face that stands for a missing italic one (12 degrees), and the widening of a
// regular one that stands for a missing bold.
constexpr double slant = 0.2126;
constexpr double emboldening = 1.0 / 28;
constexpr double subpixels = 64; // of FreeType's 26.6 coordinates

constexpr RECT everything{-0x4000, -0x4000, 0x4000, 0x4000};

FT_Fixed fixed(double value)
{
    constexpr double limit = 32767;
    return std::lround(std::clamp(value, -limit, limit) * 65536);
}

std::int32_t floor_pixel(FT_Pos subpixel)
{
    return static_cast<std::int32_t>(std::clamp<FT_Pos>(subpixel >> 6, -(1 << 24), 1 << 24));
}

// Pixels that an outline may touch, y down. The renderer gives thin stems at least one pixel, which may lie
// beside the outline's own box by half a pixel.
RECT pixel_box(FT_Outline& outline)
{
    FT_BBox box{};
    FT_Outline_Get_CBox(&outline, &box);
    return {floor_pixel(box.xMin), -floor_pixel(box.yMax + 63), floor_pixel(box.xMax + 63),
        -floor_pixel(box.yMin)};
}

RECT overlap(const RECT& a, const RECT& b)
{
    return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
        std::min(a.bottom, b.bottom)};
}

} // namespace

pen_mask render_outline(FT_Outline& outline, const RECT& visible, std::vector<std::uint8_t>& store)
{
    RECT whole = pixel_box(outline);
    whole.right = std::max(whole.right, whole.left + 1);
    whole.bottom = std::max(whole.bottom, whole.top + 1);
    const RECT area = overlap(whole, visible);
    if (outline.n_contours <= 0 || area.left >= area.right || area.top >= area.bottom)
        return {};
    pen_mask mask{nullptr, area.left, area.top, area.right - area.left, area.bottom - area.top, 0};
    mask.stride = (mask.width + 7) / 8;
    store.assign(static_cast<std::size_t>(mask.stride) * static_cast<std::size_t>(mask.height), 0);
    FT_Bitmap bitmap{};
    bitmap.rows = static_cast<unsigned>(mask.height);
    bitmap.width = static_cast<unsigned>(mask.width);
    bitmap.pitch = static_cast<int>(mask.stride);
    bitmap.buffer = store.data();
    bitmap.pixel_mode = FT_PIXEL_MODE_MONO;
    FT_Outline_Translate(&outline, -FT_Pos{area.left} * 64, FT_Pos{area.bottom} * 64);
    if (FT_Outline_Get_Bitmap(font_library(), &outline, &bitmap) != 0)
        return {};
    mask.bits = store.data();
    return mask;
}

FT_Outline* realised_font::shaped_outline(const glyph& g) const
{
    FT_Outline* outline = g.face ? g.face->outline(g.index) : nullptr;
    if (!outline || outline->n_points == 0)
        return nullptr;
    const double scale_y = em_ * subpixels / g.face->units_per_em();
    const double scale_x = scale_y * stretch_;
    const double shear = request_.italic && !g.face->italic() ? slant * scale_y : 0;
    const FT_Matrix upright{fixed(scale_x), fixed(shear), 0, fixed(scale_y)};
    FT_Outline_Transform(outline, &upright);
    if (request_.weight >= FW_SEMIBOLD && !g.face->bold())
        FT_Outline_Embolden(outline, std::lround(em_ * subpixels * emboldening));
    if (turned_) {
        const FT_Matrix turn{fixed(cosine_), fixed(-sine_), fixed(sine_), fixed(cosine_)};
        FT_Outline_Transform(outline, &turn);
    }
    return outline;
}

void realised_font::keep(glyph& g, const pen_mask& mask)
{
    if (store_.size() > largest_store) {
        for (glyph& other : single_)
            other.rendered = false;
        for (auto& [code, other] : double_)
            other.rendered = false;
        store_.clear();
    }
    g.rendered = true;
    g.left = static_cast<std::int16_t>(mask.left);
    g.top = static_cast<std::int16_t>(mask.top);
    g.width = static_cast<std::uint16_t>(mask.width);
    g.height = static_cast<std::uint16_t>(mask.height);
    g.bits = static_cast<std::uint32_t>(store_.size());
    store_.insert(store_.end(), scratch_.begin(), scratch_.end());
}

pen_mask realised_font::render(const text_character& c, const RECT& visible)
{
    glyph& g = find(c);
    if (!g.rendered) {
        FT_Outline* outline = shaped_outline(g);
        const bool kept = em_ * std::max(1.0, stretch_) <= largest_em_kept;
        scratch_.clear();
        const pen_mask mask
            = outline ? render_outline(*outline, kept ? everything : visible, scratch_) : pen_mask{};
        if (!kept)
            return mask;
        keep(g, mask);
    }
    return {store_.data() + g.bits, g.left, g.top, g.width, g.height, (g.width + 7) / 8};
}

} // namespace klv::gdi
