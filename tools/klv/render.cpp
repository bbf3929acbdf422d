#include "tools/klv/render.h"

#include "klv/bitmaps/pixels/resample.h"
#include "klv/devices/display_bitmap.h"
#include "klv/gdi/gdi.h"

#include "tools/klv/failure.h"
#include "tools/klv/interrupt.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace klv::tool {
namespace {

constexpr double micrometres_per_inch = 25400;
constexpr int shortest_long_side = 16;
constexpr int longest_long_side = 4096;
constexpr int longest_side = 32767;

constexpr int output_pixels_per_inch = 96;

// A band of the supersampled surface takes about this much memory. Its rows are a multiple of the height of
// brush patterns, so that patterns go on from band to band.
constexpr std::int64_t band_bytes = 4 << 20;
constexpr int pattern_rows = 8;

int rows_in_band(int width, int height, int antialias)
{
    const std::int64_t row_bytes = std::int64_t{width} * antialias * antialias * 4;
    const auto rows = static_cast<int>(std::clamp<std::int64_t>(band_bytes / row_bytes, 1, height));
    return rows >= height ? height : std::max(pattern_rows, rows / pattern_rows * pattern_rows);
}

class band_surface {
public:
    band_surface(int width, int rows, int antialias, const vCOLOUR& background)
        : antialias_(antialias)
        , width_(width)
        , rows_(rows)
        , background_(background)
        , device_(width * antialias_, rows * antialias_, 0, 32)
    {
        const BITMAPINFO* info = nullptr;
        if (!device_.GetDIBSectionInfo(&info, &bits_) || !bits_)
            throw failure("memory ran out");
        dc_ = device_.GetWinDC();
        // A logical unit of the device is one of its pixels, so that nothing is rounded to output pixels.
        const int pixels_per_inch = output_pixels_per_inch * antialias_;
        SetDeviceResolution(dc_, pixels_per_inch);
        device_.LogUnitsPerHorzInch(pixels_per_inch);
        device_.LogUnitsPerVertInch(pixels_per_inch);
    }

    ~band_surface() { device_.ReleaseWinDC(); }
    band_surface(const band_surface&) = delete;
    band_surface& operator=(const band_surface&) = delete;

    [[nodiscard]] HDC context() const { return dc_; }

    // The rows of a page from one on.
    void draw(vMETAFILE& picture, const vSIZE& page, int first_row)
    {
        clear();
        device_.Origin(vPOINT(0, -first_row * antialias_));
        const vRECT samples(vPOINT(0, 0), page.Width() * antialias_, page.Height() * antialias_);
        picture.Draw(device_, samples, nullptr, vPOINT(), 0.0, 0, nullptr, nullptr);
    }

    // Copies the first rows of the band into a bitmap whose rows are stored bottom row first.
    void reduce_into(oMEMDIB& out, int first_row, int rows) const
    {
        const std::ptrdiff_t stride = std::ptrdiff_t{4} * width_ * antialias_;
        const auto surface_rows = std::ptrdiff_t{rows_} * antialias_;
        const pixel_rows source{static_cast<const std::uint8_t*>(bits_) + (surface_rows - 1) * stride,
            -stride, width_ * antialias_, rows * antialias_, 4};
        const auto target_stride = static_cast<std::ptrdiff_t>(out.BytesPerLine());
        const mutable_pixel_rows target{
            out.line(out.Height() - 1 - first_row).data(), -target_stride, width_, rows, 3};
        reduce_box(source, target, antialias_, antialias_);
    }

private:
    void clear()
    {
        const RECT all{0, 0, width_ * antialias_, rows_ * antialias_};
        const HBRUSH brush = CreateSolidBrush(background_.PackedRGB());
        klv::FillRect(dc_, &all, brush);
        DeleteObject(brush);
    }

    int antialias_;
    int width_;
    int rows_;
    vCOLOUR background_;
    vDISPLAYBMP device_;
    HDC dc_ = nullptr;
    void* bits_ = nullptr;
};

int to_pixels(double v) { return static_cast<int>(std::clamp(std::round(v), 1.0, double{longest_side})); }

} // namespace

vSIZE output_size(const vMETAFILE& picture, const render_options& options)
{
    double width = picture.PhysicalWidth();
    double height = picture.PhysicalHeight();
    if (!(width > 0) || !(height > 0)) {
        width = std::max(1, picture.LogicalWidth());
        height = std::max(1, picture.LogicalHeight());
    }
    if (options.width && options.height)
        return {options.width, options.height};
    if (options.width)
        return {options.width, to_pixels(options.width * height / width)};
    if (options.height)
        return {to_pixels(options.height * width / height), options.height};
    const double scale = options.dpi / micrometres_per_inch;
    const double longer = std::max(width, height) * scale;
    const double fit = std::clamp<double>(longer, shortest_long_side, longest_long_side) / longer;
    return {to_pixels(width * scale * fit), to_pixels(height * scale * fit)};
}

namespace {

// How often a picture paints over the whole of its page, seen by drawing it small.
double layers_of(vMETAFILE& picture, const vSIZE& size)
{
    constexpr double longest_trial_side = 512;
    const double scale = longest_trial_side / std::max(size.Width(), size.Height());
    const int width = to_pixels(size.Width() * scale), height = to_pixels(size.Height() * scale);
    band_surface trial(width, height, 1, vCOLOUR());
    CountPaintedPixels(trial.context());
    trial.draw(picture, {width, height}, 0);
    return static_cast<double>(PaintedPixels(trial.context())) / (double{1} * width * height);
}

// A file of a few kilobytes can fill a large page hundreds of times.
int affordable_antialias(vMETAFILE& picture, const vSIZE& size)
{
    constexpr int finest = 4;
    constexpr double most_painted = 2e9; // device pixels in about a second
    constexpr double always_affordable = 1 << 24;
    const double pixels = double{1} * size.Width() * size.Height();
    if (pixels * finest * finest <= always_affordable)
        return finest;
    const double layers = layers_of(picture, size);
    int antialias = finest;
    while (antialias > 1 && layers * pixels * antialias * antialias > most_painted)
        antialias /= 2;
    return antialias;
}

} // namespace

std::unique_ptr<oMEMDIB> render(vMETAFILE& picture, const render_options& options)
{
    picture.TextReplay(vTEXTREPLAY::as_text);
    vSIZE size = output_size(picture, options);
    std::unique_ptr<oMEMDIB> out(new oMEMDIB(0));
    if (!out
        || !out->SetHeader(oDIBHEADER(size.Width(), size.Height(), options.dpi, options.dpi, oMODEL_RGB24))
        || !out->HasPixels())
        throw failure("memory ran out");
    const int antialias = options.antialias != 0 ? options.antialias : affordable_antialias(picture, size);
    const int band = rows_in_band(size.Width(), size.Height(), antialias);
    band_surface surface(size.Width(), band, antialias, options.background);
    for (int row = 0; row < size.Height(); row += band) {
        surface.draw(picture, size, row);
        if (interrupted())
            throw failure("cancelled");
        surface.reduce_into(*out, row, std::min(band, size.Height() - row));
    }
    return out;
}

} // namespace klv::tool
