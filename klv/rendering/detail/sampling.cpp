#include "klv/rendering/detail/sampling.h"

#include "klv/gdi/gdi.h"
#include "klv/rendering/detail/sample_band.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace klv {
namespace {

int trial_side(int side, double scale) { return std::max(1, static_cast<int>(std::round(side * scale))); }

// How often a picture paints over the whole of its page, seen by drawing it small.
std::optional<double> layers_of(vMETAFILE& picture, const vSIZE& size)
{
    constexpr double longest_trial_side = 512;
    const double scale = longest_trial_side / std::max(size.Width(), size.Height());
    const vSIZE page(trial_side(size.Width(), scale), trial_side(size.Height(), scale));
    sample_band trial(page.Width(), page.Height(), 1);
    if (!trial.ready() || !CountPaintedPixels(trial.context()))
        return std::nullopt;
    trial.draw(picture, page, 0, vCOLOUR());
    return static_cast<double>(PaintedPixels(trial.context())) / (double{1} * page.Width() * page.Height());
}

} // namespace

// A file of a few kilobytes can fill a large page hundreds of times.
int affordable_samples(vMETAFILE& picture, const vSIZE& size) noexcept
{
    constexpr int finest = 4;
    constexpr double most_painted = 2e9; // device pixels in about a second
    constexpr double always_affordable = 1 << 24;
    const double pixels = double{1} * size.Width() * size.Height();
    if (pixels * finest * finest <= always_affordable)
        return finest;
    const auto layers = layers_of(picture, size);
    if (!layers)
        return 0;
    int samples = finest;
    while (samples > 1 && *layers * pixels * samples * samples > most_painted)
        samples /= 2;
    return samples;
}

} // namespace klv
