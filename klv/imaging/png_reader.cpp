#include "klv/formats/believable_size.h"
#include "klv/imaging/png_common.h"
#include "klv/imaging/resolution.h"

#include <algorithm>
#include <array>
#include <vector>

namespace klv::imaging {

namespace {

/// A deflated stream grows at most by this factor, so a file that declares more has no such image.
constexpr std::uint64_t greatest_expansion = 1032;
/// Passed over unread: libpng would allocate what they say they hold.
constexpr png_byte unused_chunks[]
    = "bKGD\0cHRM\0eXIf\0gAMA\0hIST\0iCCP\0iTXt\0oFFs\0pCAL\0sBIT\0sCAL\0sPLT\0sRGB\0sTER\0tEXt\0tIME\0zTXt";
constexpr std::size_t chunk_name_bytes = 5;

/// Everything one reading needs, outside the frames that libpng's errors jump over.
struct reading {
    explicit reading(image_io& file)
        : in(file)
    {
    }

    image_io& in;
    png_session session{png_session::direction::reading};
    png_uint_32 width = 0;
    png_uint_32 height = 0;
    int depth = 0;
    int colour_type = 0;
    bool interlaced = false;

    line_sink* sink = nullptr;
    bool two_bits = false; ///< indices of 2 bits, delivered as 4
    std::int32_t line_bytes = 0;
    std::vector<std::uint8_t> row;
    std::vector<std::uint8_t> image; ///< whole, for interlaced files
    std::vector<png_bytep> image_rows;
    bool stopped = false;
};

void read_bytes(png_structp png, png_bytep bytes, std::size_t count)
{
    auto& state = *static_cast<reading*>(png_get_io_ptr(png));
    if (state.in.read({bytes, count}) != count)
        png_error(png, "end of file");
}

void read_header(reading& state)
{
    png_structp png = state.session.png();
    png_infop info = state.session.info();
    png_set_read_fn(png, &state, read_bytes);
    png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, unused_chunks,
        static_cast<int>(sizeof unused_chunks / chunk_name_bytes));
    png_read_info(png, info);
    int interlace = 0;
    png_get_IHDR(png, info, &state.width, &state.height, &state.depth, &state.colour_type, &interlace,
        nullptr, nullptr);
    state.interlaced = interlace != PNG_INTERLACE_NONE;
}

std::int32_t delivered_bits(const reading& state)
{
    switch (state.colour_type) {
    case PNG_COLOR_TYPE_PALETTE:
        return state.depth == 2 ? 4 : state.depth;
    case PNG_COLOR_TYPE_GRAY:
        return state.depth > 8 ? 8 : state.depth == 2 ? 4 : state.depth;
    case PNG_COLOR_TYPE_GRAY_ALPHA:
        return 8;
    default:
        return 24;
    }
}

imaging_result describe(const reading& state, file_info& info)
{
    const std::uint64_t bytes
        = std::uint64_t{png_get_rowbytes(state.session.png(), state.session.info())} * state.height;
    if (!believable_size(bytes, state.in.size(), greatest_expansion))
        return imaging_bad_data;
    info.width = static_cast<std::int32_t>(state.width);
    info.height = static_cast<std::int32_t>(state.height);
    info.bits_per_pixel = delivered_bits(state);
    info.perspective = top_left;
    info.x_resolution
        = dots_per_inch_of_metre(png_get_x_pixels_per_meter(state.session.png(), state.session.info()));
    info.y_resolution
        = dots_per_inch_of_metre(png_get_y_pixels_per_meter(state.session.png(), state.session.info()));
    return imaging_ok;
}

/// Sets libpng up so that rows come as the delivered lines need them: blue first, 2-bit indices one a byte.
/// Transparency is left out and pixels keep the colour they have beneath it, as in other converters to
/// formats without it.
void set_transformations(reading& state)
{
    png_structp png = state.session.png();
    if (state.depth == 16)
        png_set_scale_16(png);
    if (state.colour_type & PNG_COLOR_MASK_ALPHA)
        png_set_strip_alpha(png);
    if (state.colour_type & PNG_COLOR_MASK_COLOR)
        png_set_bgr(png);
    state.two_bits = state.depth == 2 && delivered_bits(state) == 4;
    if (state.two_bits)
        png_set_packing(png);
    if (state.interlaced)
        png_set_interlace_handling(png);
    png_read_update_info(png, state.session.info());
}

void read_colours(reading& state, bitmap_handle& bitmap)
{
    if (bitmap.bits_per_pixel > 8)
        return;
    bitmap.colour_count = 1U << bitmap.bits_per_pixel;
    std::fill_n(bitmap.colours, bitmap.colour_count, RGBQUAD{});
    if (state.colour_type != PNG_COLOR_TYPE_PALETTE) {
        // Two-bit samples keep their number and use the first quarter of the table.
        const std::uint32_t shades = state.two_bits ? 4 : bitmap.colour_count;
        for (std::uint32_t i = 0; i < shades; ++i) {
            const auto grey = static_cast<std::uint8_t>(i * 255 / (shades - 1));
            bitmap.colours[i] = {grey, grey, grey, 0};
        }
        return;
    }
    png_colorp palette = nullptr;
    int count = 0;
    png_get_PLTE(state.session.png(), state.session.info(), &palette, &count);
    for (int i = 0; i < count && i < static_cast<int>(bitmap.colour_count); ++i)
        bitmap.colours[i] = {palette[i].blue, palette[i].green, palette[i].red, 0};
}

/// One libpng row into the next line of the sink.
bool deliver_row(reading& state, const std::uint8_t* row)
{
    std::uint8_t* const line = state.sink->next_line();
    if (!line)
        return false;
    if (!state.two_bits) {
        std::copy_n(row, state.row.size(), line);
        return true;
    }
    std::fill_n(line, (state.row.size() + 1) / 2, std::uint8_t{0});
    for (std::size_t x = 0; x < state.row.size(); ++x)
        line[x / 2] = static_cast<std::uint8_t>(line[x / 2] | (row[x] & 0x0F) << (x % 2 == 0 ? 4 : 0));
    return true;
}

void read_rows(reading& state)
{
    for (png_uint_32 y = 0; y < state.height && !state.stopped; ++y) {
        png_read_row(state.session.png(), state.row.data(), nullptr);
        state.stopped = !deliver_row(state, state.row.data());
    }
}

void read_whole_image(reading& state) { png_read_image(state.session.png(), state.image_rows.data()); }

bool read_interlaced(reading& state)
{
    state.image.resize(state.row.size() * state.height);
    for (png_uint_32 y = 0; y < state.height; ++y)
        state.image_rows.push_back(state.image.data() + state.row.size() * y);
    const bool complete = state.session.guarded(read_whole_image, state);
    // Passes that are missing at the end of a damaged file leave a coarser picture.
    for (png_uint_32 y = 0; y < state.height && !state.stopped; ++y)
        state.stopped = !deliver_row(state, state.image_rows[y]);
    return complete;
}

} // namespace

imaging_result png_info(image_io& in, file_info& info)
{
    reading state(in);
    if (!state.session.made())
        return imaging_no_memory;
    if (!state.session.guarded(read_header, state))
        return imaging_bad_data;
    return describe(state, info);
}

imaging_result png_load(
    image_io& in, const file_info& info, bitmap_handle& bitmap, load_callback callback, void* user)
{
    reading state(in);
    if (!state.session.made())
        return imaging_no_memory;
    if (!state.session.guarded(read_header, state) || !state.session.guarded(set_transformations, state))
        return imaging_bad_data;
    state.row.resize(png_get_rowbytes(state.session.png(), state.session.info()));
    const std::size_t most = state.two_bits ? static_cast<std::size_t>(bitmap.width)
                                            : static_cast<std::size_t>(bitmap.bytes_per_line);
    if (state.row.size() > most)
        return imaging_bad_data;
    read_colours(state, bitmap);

    line_sink sink(info, bitmap, callback, user);
    state.sink = &sink;
    const bool complete = state.interlaced ? read_interlaced(state) : state.session.guarded(read_rows, state);
    // Lines of a damaged file that could be read are delivered all the same.
    if (state.stopped || !sink.finish())
        return imaging_aborted;
    return complete ? imaging_ok : imaging_bad_data;
}

} // namespace klv::imaging
