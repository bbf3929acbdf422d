#include "klv/rendering/detail/sample_band.h"

#include "klv/gdi/gdi.h"
#include "klv/metafiles/metafile.h"

#include <algorithm>

namespace klv {
namespace {

constexpr int output_pixels_per_inch = 96;
constexpr int bytes_per_sample = 4;
constexpr std::int64_t band_bytes = 4 << 20;
constexpr int pattern_rows = 8;

// A picture whose text is drawn as text while this lives.
class text_as_text {
public:
    explicit text_as_text(vMETAFILE& picture)
        : picture_(picture)
        , before_(picture.TextReplay())
    {
        picture_.TextReplay(vTEXTREPLAY::as_text);
    }
    ~text_as_text() { picture_.TextReplay(before_); }
    text_as_text(const text_as_text&) = delete;
    text_as_text& operator=(const text_as_text&) = delete;

private:
    vMETAFILE& picture_;
    vTEXTREPLAY before_;
};

} // namespace

int sample_band::rows_for(const vSIZE& page, int samples) noexcept
{
    const std::int64_t row_bytes = std::int64_t{page.Width()} * samples * samples * bytes_per_sample;
    const auto rows = static_cast<int>(std::clamp<std::int64_t>(band_bytes / row_bytes, 1, page.Height()));
    return rows >= page.Height() ? page.Height() : std::max(pattern_rows, rows / pattern_rows * pattern_rows);
}

sample_band::sample_band(int width, int rows, int samples) noexcept
    : samples_(samples)
    , width_(width)
    , rows_(rows)
    , device_(width * samples, rows * samples, 0, 8 * bytes_per_sample)
{
    const BITMAPINFO* info = nullptr;
    void* bits = nullptr;
    if (!device_.GetDIBSectionInfo(&info, &bits) || !bits)
        return;
    bits_ = bits;
    dc_ = device_.GetWinDC();
    // A logical unit of the device is one of its pixels, so that nothing is rounded to output pixels.
    const int pixels_per_inch = output_pixels_per_inch * samples_;
    SetDeviceResolution(dc_, pixels_per_inch);
    device_.LogUnitsPerHorzInch(pixels_per_inch);
    device_.LogUnitsPerVertInch(pixels_per_inch);
}

sample_band::~sample_band()
{
    if (ready())
        device_.ReleaseWinDC();
}

void sample_band::draw(vMETAFILE& picture, const vSIZE& page, int first_row, const vCOLOUR& ground) noexcept
{
    const RECT all{0, 0, width_ * samples_, rows_ * samples_};
    const HBRUSH brush = CreateSolidBrush(ground.PackedRGB());
    klv::FillRect(dc_, &all, brush);
    DeleteObject(brush);
    device_.Origin(vPOINT(0, -first_row * samples_));
    const vRECT whole(vPOINT(0, 0), page.Width() * samples_, page.Height() * samples_);
    const text_as_text replay(picture);
    picture.Draw(device_, whole, nullptr, vPOINT(), 0.0, 0, nullptr, nullptr);
}

mutable_pixel_rows sample_band::samples(int rows) noexcept
{
    // The surface has its bottom row first.
    const std::ptrdiff_t stride = std::ptrdiff_t{bytes_per_sample} * width_ * samples_;
    const auto surface_rows = std::ptrdiff_t{rows_} * samples_;
    return {static_cast<std::uint8_t*>(bits_) + (surface_rows - 1) * stride, -stride, width_ * samples_,
        rows * samples_, bytes_per_sample};
}

} // namespace klv
