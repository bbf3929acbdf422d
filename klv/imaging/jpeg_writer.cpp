#include "klv/imaging/jpeg_session.h"
#include "klv/imaging/pixel_lines.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace klv::imaging {

namespace {

/// libjpeg's own scale, to 100. Above this the file grows without a difference that can be seen.
constexpr int best_jpeg_quality = 95;
constexpr std::size_t output_buffer = 1 << 16;
constexpr std::uint8_t inch_unit = 1;

/// Everything one writing needs, outside the frames that libjpeg's errors jump over.
struct writing {
    writing(image_io& file, const bitmap_handle& handle, line_source& source, std::int32_t quality_factor)
        : out(file)
        , bitmap(handle)
        , lines(source)
        , quality(std::clamp(quality_factor, 0, best_quality) * best_jpeg_quality / best_quality)
        , grey(handle.bits_per_pixel == 8 && has_grey_colours(handle))
    {
        session.err = errors.manager();
    }
    writing(const writing&) = delete;
    writing& operator=(const writing&) = delete;
    ~writing() { jpeg_destroy_compress(&session); }

    image_io& out;
    const bitmap_handle& bitmap;
    line_source& lines;
    int quality;
    bool grey; ///< lines are grey samples as they stand
    jpeg_errors errors;
    jpeg_compress_struct session{};
    jpeg_destination_mgr destination{};
    std::vector<JOCTET> buffer = std::vector<JOCTET>(output_buffer);
    std::vector<std::uint8_t> row;
    bool stopped = false;
};

writing& state_of(j_compress_ptr session) { return *static_cast<writing*>(session->client_data); }

void start_buffer(j_compress_ptr session)
{
    writing& state = state_of(session);
    state.destination.next_output_byte = state.buffer.data();
    state.destination.free_in_buffer = state.buffer.size();
}

void write_buffer(j_compress_ptr session, std::size_t count)
{
    writing& state = state_of(session);
    if (!state.out.write({state.buffer.data(), count}))
        ERREXIT(session, JERR_FILE_WRITE);
}

boolean empty_buffer(j_compress_ptr session)
{
    write_buffer(session, state_of(session).buffer.size());
    start_buffer(session);
    return TRUE;
}

void end_buffer(j_compress_ptr session)
{
    const writing& state = state_of(session);
    write_buffer(session, state.buffer.size() - state.destination.free_in_buffer);
}

void write_header(writing& state)
{
    jpeg_compress_struct& session = state.session;
    jpeg_create_compress(&session);
    session.client_data = &state;
    state.destination.init_destination = start_buffer;
    state.destination.empty_output_buffer = empty_buffer;
    state.destination.term_destination = end_buffer;
    session.dest = &state.destination;
    session.image_width = static_cast<JDIMENSION>(state.bitmap.width);
    session.image_height = static_cast<JDIMENSION>(state.bitmap.height);
    session.input_components = state.grey ? 1 : 3;
    session.in_color_space = state.grey ? JCS_GRAYSCALE : JCS_EXT_BGR;
    jpeg_set_defaults(&session);
    jpeg_set_quality(&session, state.quality, TRUE);
    // Colours keep the resolution of the greys: drawn pictures have thin coloured lines.
    session.comp_info[0].h_samp_factor = 1;
    session.comp_info[0].v_samp_factor = 1;
    if (state.bitmap.x_resolution > 0 && state.bitmap.y_resolution > 0) {
        constexpr std::int32_t most = std::numeric_limits<UINT16>::max();
        session.density_unit = inch_unit;
        session.X_density = static_cast<UINT16>(std::min(state.bitmap.x_resolution, most));
        session.Y_density = static_cast<UINT16>(std::min(state.bitmap.y_resolution, most));
    }
    jpeg_start_compress(&session, TRUE);
}

void write_lines(writing& state)
{
    const bool as_stored = state.grey || state.bitmap.bits_per_pixel == 24;
    for (std::int32_t y = 0; y < state.bitmap.height; ++y) {
        const std::uint8_t* const line = state.lines.line_from_top(y);
        if (!line) {
            state.stopped = true;
            return;
        }
        if (!as_stored)
            expand_to_24(state.bitmap, line, state.row.data());
        // libjpeg only reads what it is given.
        JSAMPROW samples = as_stored ? const_cast<JSAMPROW>(line) : state.row.data();
        jpeg_write_scanlines(&state.session, &samples, 1);
    }
    jpeg_finish_compress(&state.session);
}

} // namespace

imaging_result jpeg_save(image_io& out, const bitmap_handle& bitmap, line_source& lines, std::int32_t quality)
{
    if (bitmap.width > JPEG_MAX_DIMENSION || bitmap.height > JPEG_MAX_DIMENSION)
        return imaging_unsupported;
    writing state(out, bitmap, lines, quality);
    state.row.resize(3 * static_cast<std::size_t>(bitmap.width));
    const bool done = state.errors.guarded(write_header, state) && state.errors.guarded(write_lines, state);
    if (state.stopped)
        return imaging_aborted;
    return done ? imaging_ok : state.errors.out_of_memory() ? imaging_no_memory : imaging_write_error;
}

} // namespace klv::imaging
