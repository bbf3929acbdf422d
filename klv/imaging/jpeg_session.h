#pragma once

#include "klv/imaging/codec.h"

#include <csetjmp>
#include <cstddef>
#include <cstdio>

#include <jerror.h>
#include <jpeglib.h>

namespace klv::imaging {

/// The error manager of one libjpeg conversion. libjpeg reports errors by calling back; the callback jumps
/// to `guarded`, so what runs inside must not own anything in its frames. Messages go nowhere.
class jpeg_errors {
public:
    jpeg_errors();
    jpeg_errors(const jpeg_errors&) = delete;
    jpeg_errors& operator=(const jpeg_errors&) = delete;

    [[nodiscard]] jpeg_error_mgr* manager() { return &fields_.manager; }
    /// Whether the compressed data ended before the picture did.
    [[nodiscard]] bool data_ended() const { return fields_.data_ended; }
    [[nodiscard]] bool out_of_memory() const { return fields_.manager.msg_code == JERR_OUT_OF_MEMORY; }

    /// Runs step(state); false when libjpeg reported an error.
    template <class State> [[nodiscard]] bool guarded(void (*step)(State&), State& state)
    {
        if (setjmp(fields_.jump) != 0)
            return false;
        step(state);
        return true;
    }

private:
    struct fields {
        jpeg_error_mgr manager; ///< first: libjpeg knows this one
        std::jmp_buf jump;
        bool data_ended;
    };
    [[noreturn]] static void on_error(j_common_ptr session);
    static void on_message(j_common_ptr session, int level);

    fields fields_{};
};

imaging_result jpeg_info(image_io& in, file_info& info);
imaging_result jpeg_load(
    image_io& in, const file_info& info, bitmap_handle& bitmap, load_callback callback, void* user);
imaging_result jpeg_save(
    image_io& out, const bitmap_handle& bitmap, line_source& lines, std::int32_t quality);

} // namespace klv::imaging
