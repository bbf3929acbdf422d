#pragma once

#include "klv/imaging/image_io.h"
#include "klv/imaging/imaging_api.h"

#include <cstdint>
#include <span>
#include <vector>

namespace klv::imaging {

/// Hands the lines of an image to the load callback, in bands.
class line_sink {
public:
    line_sink(const file_info& info, const bitmap_handle& bitmap, load_callback callback, void* user);

    /// Room for the next line, its padding cleared; null when the callback has stopped the load. The line
    /// counts as delivered when the next one is asked for, or finish is called.
    [[nodiscard]] std::uint8_t* next_line();
    [[nodiscard]] bool finish();
    [[nodiscard]] std::int32_t line_bytes() const { return bitmap_.bytes_per_line; }

private:
    [[nodiscard]] bool deliver();

    const file_info& info_;
    const bitmap_handle& bitmap_;
    load_callback callback_;
    void* user_;
    std::vector<std::uint8_t> band_;
    std::int32_t band_lines_;
    std::int32_t delivered_ = 0;
    std::int32_t filled_ = 0;
};

/// Asks the save callback for the lines of a bitmap, in bands and in either order.
class line_source {
public:
    line_source(const bitmap_handle& bitmap, save_callback callback, void* user);

    /// The line at this distance from the top; null when the callback has stopped the save. Valid until the
    /// next one is asked for.
    [[nodiscard]] const std::uint8_t* line_from_top(std::int32_t index);
    [[nodiscard]] const std::uint8_t* line_from_bottom(std::int32_t index);

private:
    [[nodiscard]] const std::uint8_t* stored_line(std::int32_t index, bool descending);

    const bitmap_handle& bitmap_;
    save_callback callback_;
    void* user_;
    std::vector<std::uint8_t> band_;
    std::int32_t band_lines_;
    std::int32_t first_ = 0;
    std::int32_t count_ = 0;
};

/// One file format.
struct codec {
    imaging_format format;
    /// Tells the format by the first bytes of a file.
    bool (*recognises)(std::span<const std::uint8_t> start);
    /// In a format of several resolutions the width and height come in as what L_SetDimension asked for, or
    /// 0.
    imaging_result (*info)(image_io& in, file_info& info);
    /// Fills in the bitmap's colours, if it has any, before the first line is delivered.
    imaging_result (*load)(
        image_io& in, const file_info& info, bitmap_handle& bitmap, load_callback callback, void* user);
    /// Null for formats that are only read. quality: 0 to best_quality, for those that lose something.
    imaging_result (*save)(
        image_io& out, const bitmap_handle& bitmap, line_source& lines, std::int32_t quality);
    /// The resolutions, smallest first; null for formats of one.
    imaging_result (*dimensions)(image_io& in, std::vector<dimension>& found);
};

/// The formats that are there. The first codec that recognises a file reads it.
[[nodiscard]] std::span<const codec> codecs();

extern const codec bmp_codec;
extern const codec flashpix_codec;
extern const codec jpeg_codec;
extern const codec pcx_codec;
extern const codec photo_cd_codec;
extern const codec photoshop_codec;
extern const codec png_codec;
extern const codec targa_codec;
extern const codec tiff_codec;

/// Bytes of start that a recogniser can ask for: Photo CD files name themselves behind an empty sector.
inline constexpr std::size_t recognised_bytes = 2056;

} // namespace klv::imaging
