#include "klv/rendering/render.h"

#include "klv/bitmaps/memory_dib.h"
#include "klv/rendering/bitmap_picture.h"
#include "klv/rendering/detail/clear_ground.h"
#include "klv/rendering/detail/limits.h"
#include "klv/rendering/detail/pixel_output.h"
#include "klv/rendering/detail/playback_progress.h"
#include "klv/rendering/detail/sample_band.h"
#include "klv/rendering/detail/sampling.h"
#include "klv/rendering/document.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace klv {
namespace {

constexpr double micrometres_per_inch = 25400;
constexpr int usual_dpi = 96;
constexpr int most_dpi = 1'000'000;
constexpr double shortest_long_side = 16;
constexpr double longest_long_side = 4096;

const vCOLOUR white(255, 255, 255);
const vCOLOUR black(0, 0, 0);

struct extent {
    double width;
    double height;
};

extent page_of(const vMETAFILE& picture)
{
    const extent physical{double(picture.PhysicalWidth()), double(picture.PhysicalHeight())};
    if (physical.width > 0 && physical.height > 0)
        return physical;
    return {double(std::max(1, picture.LogicalWidth())), double(std::max(1, picture.LogicalHeight()))};
}

// A bitmap without a resolution of its own has the usual one.
extent page_of(const oDIB& bitmap)
{
    oDIBHEADER header;
    bitmap.GetHeader(header);
    const auto micrometres = [](int pixels, int dpi) {
        return std::max(1, pixels) * micrometres_per_inch / (dpi > 0 ? dpi : usual_dpi);
    };
    return {micrometres(header.Width(), header.HorzDPI()), micrometres(header.Height(), header.VertDPI())};
}

int to_pixels(double v) { return static_cast<int>(std::clamp(std::round(v), 1.0, double{longest_side})); }

vSIZE own_size(const extent& page, int dpi)
{
    const double scale = (dpi != 0 ? dpi : usual_dpi) / micrometres_per_inch;
    const double longer = std::max(page.width, page.height) * scale;
    const double fit = std::clamp(longer, shortest_long_side, longest_long_side) / longer;
    return {to_pixels(page.width * scale * fit), to_pixels(page.height * scale * fit)};
}

bool has_own_size(const render_options& options)
{
    return options.width == 0 && options.height == 0 && options.dpi == 0;
}

bool valid(const render_options& options)
{
    const auto is_side_or_none = [](int side) { return side == 0 || is_side(side); };
    return is_side_or_none(options.width) && is_side_or_none(options.height) && options.dpi >= 0
        && options.dpi <= most_dpi && options.samples >= 0 && options.samples <= most_samples;
}

// Draws bands of a page, as often as the ground asks for, and hands their pixels out.
class page_drawing {
public:
    page_drawing(
        vMETAFILE& picture, const pixel_view& into, int samples, const std::optional<vCOLOUR>& ground)
        : picture_(picture)
        , into_(into)
        , samples_(samples)
        , rows_(sample_band::rows_for(page(), samples))
        , ground_(ground                  ? *ground
                  : has_alpha(into.order) ? black
                                          : white)
        , band_(into.width, rows_, samples)
    {
        if (!ground && has_alpha(into.order))
            on_white_.emplace(into.width, rows_, samples);
    }

    bool ready() const { return band_.ready() && (!on_white_ || on_white_->ready()); }

    render_status run(playback_progress& progress)
    {
        const int bands = (into_.height + rows_ - 1) / rows_;
        progress.begin(on_white_ ? 2 * bands : bands);
        for (int row = 0; row < into_.height; row += rows_) {
            draw(band_, row, ground_, progress);
            if (on_white_)
                draw(*on_white_, row, white, progress);
            if (progress.stopped())
                return render_code::cancelled;
            if (!hand_out(row, std::min(rows_, into_.height - row)))
                return render_code::no_memory;
        }
        return {};
    }

private:
    vSIZE page() const { return {into_.width, into_.height}; }

    void draw(sample_band& band, int row, const vCOLOUR& ground, playback_progress& progress)
    {
        if (progress.stopped())
            return;
        band.draw(picture_, page(), row, ground);
        progress.next_part();
    }

    bool hand_out(int row, int rows)
    {
        const auto samples = band_.samples(rows);
        if (on_white_)
            solve_alpha(samples, read_only(on_white_->samples(rows)));
        return put_samples(samples, samples_, on_white_.has_value(), rows_of(into_, row, rows));
    }

    vMETAFILE& picture_;
    pixel_view into_;
    int samples_;
    int rows_;
    vCOLOUR ground_;
    sample_band band_;
    std::optional<sample_band> on_white_;
};

render_status draw(vMETAFILE& picture, const render_options& options, const pixel_view& into)
{
    playback_progress progress(picture, options.progress);
    const vSIZE size(into.width, into.height);
    const int samples = options.samples != 0 ? options.samples : affordable_samples(picture, size);
    if (progress.stopped())
        return render_code::cancelled;
    if (samples == 0)
        return render_code::no_memory;
    page_drawing drawing(picture, into, samples, options.ground);
    return drawing.ready() ? drawing.run(progress) : render_code::no_memory;
}

render_status draw(const oDIB& bitmap, const pixel_view& into)
{
    const oMEMDIB scaled(
        bitmap, static_cast<std::uint32_t>(into.width), static_cast<std::uint32_t>(into.height), 24, 1, 0);
    if (!scaled.HasPixels() || scaled.Width() != into.width || scaled.Height() != into.height)
        return render_code::no_memory;
    return put_bitmap(scaled, into) ? render_status() : render_code::no_memory;
}

// The bitmap that a picture just holds, where no size of the options makes it something to be drawn.
std::unique_ptr<oMEMDIB> wanted_as_held(const drawable& what, const render_options& options)
{
    return what.picture() && has_own_size(options) ? held_bitmap(*what.picture()) : nullptr;
}

} // namespace

drawable::drawable(const document& opened) noexcept
    : picture_(opened.picture.get())
    , bitmap_(opened.bitmap.get())
{
}

vSIZE rendered_size(const drawable& what, const render_options& options) noexcept
{
    if (!what.picture() && !what.bitmap())
        return {};
    if (what.bitmap() && has_own_size(options))
        return {what.bitmap()->Width(), what.bitmap()->Height()};
    if (options.width && options.height && !options.fit)
        return {options.width, options.height};
    const extent page = what.picture() ? page_of(*what.picture()) : page_of(*what.bitmap());
    if (options.width == 0 && options.height == 0)
        return own_size(page, options.dpi);
    const bool by_width = options.height == 0
        || (options.width != 0 && options.width * page.height <= options.height * page.width);
    if (by_width)
        return {options.width, to_pixels(options.width * page.height / page.width)};
    return {to_pixels(options.height * page.width / page.height), options.height};
}

render_status render(const drawable& what, const render_options& options, const pixel_view& into) noexcept
{
    if (!valid(options) || !into.first || !is_side(into.width) || !is_side(into.height))
        return render_code::bad_options;
    if (what.picture())
        return draw(*what.picture(), options, into);
    return what.bitmap() ? draw(*what.bitmap(), into) : render_code::bad_options;
}

render_status render(const drawable& what, const render_options& options, rendered_image& into) noexcept
{
    if (!valid(options))
        return render_code::bad_options;
    if (const auto held = wanted_as_held(what, options))
        return render(*held, options, into);
    const vSIZE size = rendered_size(what, options);
    if (!is_side(size.Width()) || !is_side(size.Height()))
        return render_code::bad_options;
    rendered_image made;
    if (!made.resize(size.Width(), size.Height(), options.order))
        return render_code::no_memory;
    render_status status = render(what, options, made.view());
    if (status.ok())
        into = std::move(made);
    return status;
}

render_status render_file(std::string_view name, const render_options& options, rendered_image& into) noexcept
{
    document opened;
    if (auto status = open_file(name, opened, {.resolution = {}, .progress = options.progress}); !status.ok())
        return status;
    return render(opened, options, into);
}

render_status render_bytes(
    std::span<const std::uint8_t> bytes, const render_options& options, rendered_image& into) noexcept
{
    document opened;
    if (auto status = open_bytes(bytes, opened, {}, {.resolution = {}, .progress = options.progress});
        !status.ok())
        return status;
    return render(opened, options, into);
}

render_status render_bitmap(const drawable& what, const render_options& options, oMEMDIB& into) noexcept
{
    if (!valid(options))
        return render_code::bad_options;
    if (auto held = wanted_as_held(what, options)) {
        into = std::move(*held);
        return {};
    }
    const vSIZE size = rendered_size(what, options);
    if (!is_side(size.Width()) || !is_side(size.Height()))
        return render_code::bad_options;
    const int dpi = options.dpi != 0 ? options.dpi : usual_dpi;
    oMEMDIB made(0);
    if (!made.SetHeader(oDIBHEADER(size.Width(), size.Height(), dpi, dpi, oMODEL_RGB24)) || !made.HasPixels())
        return render_code::no_memory;
    const pixel_view view{made.line(size.Height() - 1).data(),
        -static_cast<std::ptrdiff_t>(made.BytesPerLine()), size.Width(), size.Height(), pixel_order::bgr};
    render_status status = render(what, options, view);
    if (status.ok())
        into = std::move(made);
    return status;
}

} // namespace klv
