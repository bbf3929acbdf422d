#include "klv/formats/believable_size.h"
#include "klv/imaging/jpeg_session.h"
#include "klv/imaging/pixel_lines.h"
#include "klv/imaging/resolution.h"

#include <algorithm>
#include <array>
#include <vector>

namespace klv::imaging {

namespace {

/// Pixels that a byte can stand for at most: a block of 8 by 8 takes a bit.
constexpr std::uint64_t most_pixels_in_byte = 512;
/// Every pass over a progressive picture costs its whole size; no encoder makes so many.
constexpr int most_scans = 200;
constexpr std::size_t input_buffer = 1 << 16;
constexpr std::uint8_t centimetre_unit = 2;
constexpr std::uint8_t inch_unit = 1;
constexpr std::array<JOCTET, 2> end_of_image{0xFF, JPEG_EOI};

/// Everything one reading needs, outside the frames that libjpeg's errors jump over.
struct reading {
    explicit reading(image_io& file)
        : in(file)
    {
        session.err = errors.manager();
    }
    reading(const reading&) = delete;
    reading& operator=(const reading&) = delete;
    ~reading() { jpeg_destroy_decompress(&session); }

    [[nodiscard]] bool inks() const { return session.num_components == 4; }

    image_io& in;
    jpeg_errors errors;
    jpeg_decompress_struct session{};
    jpeg_source_mgr source{};
    jpeg_progress_mgr progress{};
    std::vector<JOCTET> buffer = std::vector<JOCTET>(input_buffer);
    std::vector<std::uint8_t> ink_line;
    line_sink* sink = nullptr;
    bool input_ended = false;
    bool stopped = false;
};

reading& state_of(j_decompress_ptr session) { return *static_cast<reading*>(session->client_data); }

void ignore(j_decompress_ptr) { }

boolean fill_buffer(j_decompress_ptr session)
{
    reading& state = state_of(session);
    const std::size_t count = state.input_ended ? 0 : state.in.read(state.buffer);
    if (count == 0) {
        // The decoder makes what it can of a file that was cut off.
        state.input_ended = true;
        state.source.next_input_byte = end_of_image.data();
        state.source.bytes_in_buffer = end_of_image.size();
        return TRUE;
    }
    state.source.next_input_byte = state.buffer.data();
    state.source.bytes_in_buffer = count;
    return TRUE;
}

void skip_bytes(j_decompress_ptr session, long count)
{
    reading& state = state_of(session);
    auto left = count > 0 ? static_cast<std::size_t>(count) : 0;
    while (left > state.source.bytes_in_buffer && !state.input_ended) {
        left -= state.source.bytes_in_buffer;
        fill_buffer(session);
    }
    left = std::min(left, state.source.bytes_in_buffer);
    state.source.next_input_byte += left;
    state.source.bytes_in_buffer -= left;
}

void check_scans(j_common_ptr session)
{
    auto* const decoder = reinterpret_cast<j_decompress_ptr>(session);
    if (decoder->input_scan_number > most_scans)
        ERREXIT(session, JERR_BAD_PROGRESSION);
}

void read_header(reading& state)
{
    jpeg_create_decompress(&state.session);
    state.session.client_data = &state;
    state.source.init_source = ignore;
    state.source.fill_input_buffer = fill_buffer;
    state.source.skip_input_data = skip_bytes;
    state.source.resync_to_restart = jpeg_resync_to_restart;
    state.source.term_source = ignore;
    state.session.src = &state.source;
    state.progress.progress_monitor = check_scans;
    state.session.progress = &state.progress;
    jpeg_read_header(&state.session, TRUE);
    if (state.session.num_components == 1)
        state.session.out_color_space = JCS_GRAYSCALE;
    else
        state.session.out_color_space = state.inks() ? JCS_CMYK : JCS_EXT_BGR;
}

std::int32_t dots_per_inch(const jpeg_decompress_struct& session, UINT16 density)
{
    if (session.density_unit == inch_unit)
        return density;
    return session.density_unit == centimetre_unit ? whole_dots_per_inch(density * centimetres_in_inch) : 0;
}

imaging_result describe(reading& state, file_info& info)
{
    const jpeg_decompress_struct& session = state.session;
    const std::uint64_t pixels = std::uint64_t{session.image_width} * session.image_height;
    if (!believable_size(pixels, state.in.size(), most_pixels_in_byte))
        return imaging_bad_data;
    info.width = static_cast<std::int32_t>(session.image_width);
    info.height = static_cast<std::int32_t>(session.image_height);
    info.bits_per_pixel = session.num_components == 1 ? 8 : 24;
    info.perspective = top_left;
    info.x_resolution = dots_per_inch(session, session.X_density);
    info.y_resolution = dots_per_inch(session, session.Y_density);
    return imaging_ok;
}

void start(reading& state) { jpeg_start_decompress(&state.session); }

void read_line(reading& state, std::uint8_t* line)
{
    JSAMPROW row = state.inks() ? state.ink_line.data() : line;
    jpeg_read_scanlines(&state.session, &row, 1);
    if (state.inks())
        inks_to_24(row, line, state.session.output_width, state.session.saw_Adobe_marker);
}

void read_lines(reading& state)
{
    while (state.session.output_scanline < state.session.output_height) {
        std::uint8_t* const line = state.sink->next_line();
        if (!line) {
            state.stopped = true;
            return;
        }
        // Damage inside the line leaves it black, not as the band before had it.
        std::fill_n(line, state.sink->line_bytes(), std::uint8_t{0});
        read_line(state, line);
    }
}

imaging_result failure(const reading& state)
{
    return state.errors.out_of_memory() ? imaging_no_memory : imaging_bad_data;
}

} // namespace

imaging_result jpeg_info(image_io& in, file_info& info)
{
    reading state(in);
    return state.errors.guarded(read_header, state) ? describe(state, info) : failure(state);
}

imaging_result jpeg_load(
    image_io& in, const file_info& info, bitmap_handle& bitmap, load_callback callback, void* user)
{
    reading state(in);
    if (!state.errors.guarded(read_header, state) || !state.errors.guarded(start, state))
        return failure(state);
    if (static_cast<std::int32_t>(state.session.output_width) != bitmap.width
        || static_cast<std::int32_t>(state.session.output_height) != bitmap.height)
        return imaging_bad_data;
    if (bitmap.bits_per_pixel == 8)
        set_grey_colours(bitmap);
    if (state.inks())
        state.ink_line.resize(std::size_t{4} * state.session.output_width);

    line_sink sink(info, bitmap, callback, user);
    state.sink = &sink;
    const bool complete = state.errors.guarded(read_lines, state);
    // Lines of a damaged file that could be read are delivered all the same.
    if (state.stopped || !sink.finish())
        return imaging_aborted;
    if (!complete)
        return failure(state);
    return state.input_ended && state.errors.data_ended() ? imaging_read_error : imaging_ok;
}

} // namespace klv::imaging
