#include "klv/bitmaps/detail/dib_distort.h"

#include "klv/base/vec2.h"
#include "klv/bitmaps/pixels/colour_matcher.h"
#include "klv/bitmaps/pixels/triangle_renderer.h"
#include "klv/bitmaps/tile_info.h"
#include "klv/geometry/distort.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace klv {

namespace {

/// Levels of halving for distortions that bend: 16 x 16 pieces. A linear one needs none.
constexpr int subdivision_depth = 4;
/// Sizes of a result that no picture needs; a larger one is scaled down to them.
constexpr double greatest_side = 32768;
constexpr double greatest_area = 1 << 25; ///< pixels

/// From the unit square of the source part to pixels of the result.
class quad_mapping {
public:
    explicit quad_mapping(const distorted_copy& what)
        : destination_(what.destination)
        , distort_(what.distort)
        , linear_(!what.distort || what.distort->IsLinear())
    {
    }

    [[nodiscard]] bool linear() const { return linear_; }
    /// In the units of the distorted destination.
    [[nodiscard]] vec2 distorted(double u, double v) const
    {
        const double x
            = destination_.Left() + u * (static_cast<double>(destination_.Right()) - destination_.Left());
        const double y
            = destination_.Top() + v * (static_cast<double>(destination_.Bottom()) - destination_.Top());
        if (!distort_)
            return {x, y};
        if (linear_)
            return {distort_->Coefficient(0) * x + distort_->Coefficient(1) * y + distort_->Coefficient(2),
                distort_->Coefficient(3) * x + distort_->Coefficient(4) * y + distort_->Coefficient(5)};
        vPOINT point(static_cast<int>(std::lround(x)), static_cast<int>(std::lround(y)));
        distort_->Transform(&point, 1);
        return {static_cast<double>(point.x), static_cast<double>(point.y)};
    }

    /// Chooses the size of the result. False when nothing is left.
    [[nodiscard]] bool fit(const vRECT* clip, int limit)
    {
        find_bounds();
        if (clip) {
            left_ = std::max<double>(left_, std::min(clip->Left(), clip->Right()));
            right_ = std::min<double>(right_, std::max(clip->Left(), clip->Right()));
            top_ = std::max<double>(top_, std::min(clip->Top(), clip->Bottom()));
            bottom_ = std::min<double>(bottom_, std::max(clip->Top(), clip->Bottom()));
        }
        const double longer = std::max(right_ - left_, bottom_ - top_);
        if (!(right_ > left_ && bottom_ > top_) || !std::isfinite(longer))
            return false;
        const double most = limit > 0 ? std::min<double>(limit, greatest_side) : greatest_side;
        const double area = (right_ - left_) * (bottom_ - top_);
        const double scale = std::min({1.0, most / longer, std::sqrt(greatest_area / area)});
        width_ = std::max(1, static_cast<int>(std::lround((right_ - left_) * scale)));
        height_ = std::max(1, static_cast<int>(std::lround((bottom_ - top_) * scale)));
        return true;
    }
    [[nodiscard]] std::int32_t width() const { return width_; }
    [[nodiscard]] std::int32_t height() const { return height_; }

    [[nodiscard]] texture_vertex vertex(double u, double v) const
    {
        const vec2 at = distorted(u, v);
        return {(at.x - left_) * width_ / (right_ - left_), (at.y - top_) * height_ / (bottom_ - top_), u, v};
    }

private:
    void find_bounds()
    {
        const int steps = linear_ ? 1 : 1 << subdivision_depth;
        const vec2 first = distorted(0, 0);
        left_ = right_ = first.x;
        top_ = bottom_ = first.y;
        for (int i = 0; i <= steps; ++i) {
            for (int j = 0; j <= steps; ++j) {
                const vec2 at = distorted(static_cast<double>(i) / steps, static_cast<double>(j) / steps);
                left_ = std::min(left_, at.x);
                right_ = std::max(right_, at.x);
                top_ = std::min(top_, at.y);
                bottom_ = std::max(bottom_, at.y);
            }
        }
    }

    vRECT destination_;
    const IDistort* distort_;
    bool linear_;
    double left_ = 0;
    double top_ = 0;
    double right_ = 0;
    double bottom_ = 0;
    std::int32_t width_ = 0;
    std::int32_t height_ = 0;
};

/// A picture in memory, top line first, without padding.
struct flat_picture {
    vBUFFER<std::uint8_t> pixels;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t channels = 3;

    [[nodiscard]] bool make(std::int32_t w, std::int32_t h, std::int32_t bytes_per_pixel)
    {
        width = w;
        height = h;
        channels = bytes_per_pixel;
        return pixels.resize(static_cast<std::size_t>(w) * static_cast<std::size_t>(h)
            * static_cast<std::size_t>(bytes_per_pixel));
    }
    [[nodiscard]] pixel_rows rows() const
    {
        return {pixels.data(), std::ptrdiff_t{width} * channels, width, height, channels};
    }
    [[nodiscard]] mutable_pixel_rows rows()
    {
        return {pixels.data(), std::ptrdiff_t{width} * channels, width, height, channels};
    }
};

/// The part of the source, right way round, as indices or as 24-bit pixels.
bool read_part(const distorted_copy& what, bool as_indices, flat_picture& part)
{
    const oDIB& source = what.source;
    const RECT area{std::max(0, std::min(what.source_rect.Left(), what.source_rect.Right())),
        std::max(0, std::min(what.source_rect.Top(), what.source_rect.Bottom())),
        std::min(source.Width(), std::max(what.source_rect.Left(), what.source_rect.Right())),
        std::min(source.Height(), std::max(what.source_rect.Top(), what.source_rect.Bottom()))};
    vBUFFER<std::uint8_t> line;
    if (area.left >= area.right || area.top >= area.bottom || !line.resize(source.BytesPerLine())
        || !part.make(area.right - area.left, area.bottom - area.top, as_indices ? 1 : 3))
        return false;
    vBUFFER<std::uint8_t> unpacked;
    if (!unpacked.resize(static_cast<std::size_t>(source.Width()) * static_cast<std::size_t>(part.channels)))
        return false;
    const bool upside_down = what.source_rect.Top() > what.source_rect.Bottom();
    const bool mirrored = what.source_rect.Left() > what.source_rect.Right();
    for (std::int32_t y = area.top; y < area.bottom; ++y) {
        if (!source.GetImageLines(source.Height() - 1 - y, 1, line.data(), nullptr))
            return false;
        if (as_indices)
            read_line_as_indices(line.data(), source.ColourDepth(), unpacked.data(), source.Width());
        else
            read_line_as_24(
                line.span(), source.ColourDepth(), unpacked.data(), source.Width(), source.colours());
        std::uint8_t* to = part.rows().row(upside_down ? area.bottom - 1 - y : y - area.top);
        for (std::int32_t x = 0; x < part.width; ++x, to += part.channels)
            std::copy_n(unpacked.data()
                    + std::ptrdiff_t{mirrored ? area.right - 1 - x : area.left + x} * part.channels,
                part.channels, to);
    }
    return true;
}

/// Averages the picture down to about the size in which it will show, so that interpolation between pixels
/// leaves nothing out.
bool shrink_to_shown_size(
    flat_picture& picture, const quad_mapping& mapping, std::int32_t across, std::int32_t down)
{
    const auto distance
        = [](const texture_vertex& a, const texture_vertex& b) { return std::hypot(b.x - a.x, b.y - a.y); };
    const texture_vertex origin = mapping.vertex(0, 0);
    const auto shown = [](double length, std::int32_t repeats, std::int32_t size) {
        return static_cast<std::int32_t>(
            std::clamp(std::round(length / repeats), 1.0, static_cast<double>(size)));
    };
    const std::int32_t width = shown(distance(origin, mapping.vertex(1, 0)), across, picture.width);
    const std::int32_t height = shown(distance(origin, mapping.vertex(0, 1)), down, picture.height);
    if (width == picture.width && height == picture.height)
        return true;
    flat_picture smaller;
    if (!smaller.make(width, height, picture.channels)
        || !resample_smooth(std::as_const(picture).rows(), smaller.rows()))
        return false;
    picture.pixels.swap(smaller.pixels);
    picture.width = width;
    picture.height = height;
    return true;
}

/// Splits the quadrilateral at the midpoints of its edges down to the depth, then into triangles.
void render_quad(const triangle_renderer& renderer, const quad_mapping& mapping, double u, double v,
    double size, int depth)
{
    if (depth > 0) {
        const double half = size / 2;
        render_quad(renderer, mapping, u, v, half, depth - 1);
        render_quad(renderer, mapping, u + half, v, half, depth - 1);
        render_quad(renderer, mapping, u, v + half, half, depth - 1);
        render_quad(renderer, mapping, u + half, v + half, half, depth - 1);
        return;
    }
    const texture_vertex a = mapping.vertex(u, v);
    const texture_vertex b = mapping.vertex(u + size, v);
    const texture_vertex c = mapping.vertex(u + size, v + size);
    const texture_vertex d = mapping.vertex(u, v + size);
    renderer.RenderTriangle(a, b, c);
    renderer.RenderTriangle(a, c, d);
}

std::uint8_t white_index(std::span<const RGBQUAD> colours)
{
    return colours.empty() ? std::uint8_t{0} : colour_matcher(colours).nearest(255, 255, 255);
}

/// Rows of the picture become lines of the bitmap, bottom line first.
bool store(flat_picture& picture, const distorted_copy& what, dib_pixels& result)
{
    const std::uint16_t bits = std::min<std::uint16_t>(layout_of(what.model).bits, 24);
    oDIBHEADER header;
    what.source.GetHeader(header);
    result.header
        = oDIBHEADER(picture.width, picture.height, header.HorzDPI(), header.VertDPI(), model_of_bits(bits));
    if (result.header.Size() == 0 || !result.pixels.resize(result.header.Size()))
        return false;
    const std::size_t stride = result.header.BytesPerLine();
    const auto line = [&](std::int32_t y) {
        return result.pixels.data() + stride * static_cast<std::size_t>(picture.height - 1 - y);
    };
    if (picture.channels == 1) {
        for (std::int32_t y = 0; y < picture.height; ++y)
            write_indices(picture.rows().row(y), line(y), bits, picture.width);
        return result.colours.assign(what.source.colours());
    }
    if (bits == 24) {
        for (std::int32_t y = 0; y < picture.height; ++y)
            WriteLine24(picture.rows().row(y), line(y), picture.width);
        return true;
    }
    vBUFFER<std::uint8_t> lines;
    const auto stride_24
        = static_cast<std::size_t>(dib_stride(static_cast<std::uint32_t>(picture.width), 24));
    if (!lines.resize(stride_24 * static_cast<std::size_t>(picture.height)))
        return false;
    for (std::int32_t y = 0; y < picture.height; ++y)
        WriteLine24(picture.rows().row(y),
            lines.data() + stride_24 * static_cast<std::size_t>(picture.height - 1 - y), picture.width);
    return quantise_24(lines.span(), picture.width, result);
}

} // namespace

bool render_distorted(const distorted_copy& what, dib_pixels& result) noexcept
{
    quad_mapping mapping(what);
    if (!mapping.fit(what.clip, what.limit))
        return false;
    const bool tiled = what.tiles && what.tiles->GetType() != vTILE_NONE;
    const std::int32_t across = tiled ? what.tiles->GetTilesAcross() : 1;
    const std::int32_t down = tiled ? what.tiles->GetTilesDown() : 1;
    const std::uint16_t bits = layout_of(what.model).bits;
    const bool as_indices = bits <= 8 && what.source.ColourDepth() <= bits;
    const bool smooth = what.source.ColourDepth() > 8;

    flat_picture part;
    flat_picture target;
    if (!read_part(what, as_indices, part) || (smooth && !shrink_to_shown_size(part, mapping, across, down))
        || !target.make(mapping.width(), mapping.height(), part.channels))
        return false;
    std::ranges::fill(target.pixels, as_indices ? white_index(what.source.colours()) : std::uint8_t{255});
    const triangle_renderer renderer(std::as_const(part).rows(), target.rows(),
        smooth ? sampling::interpolated : sampling::nearest, across, down);
    render_quad(renderer, mapping, 0, 0, 1, mapping.linear() ? 0 : subdivision_depth);
    return store(target, what, result);
}

} // namespace klv
