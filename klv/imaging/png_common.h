#pragma once

#include "klv/imaging/codec.h"

#include <csetjmp>

#include <png.h>

namespace klv::imaging {

/// Owns the two structures of a libpng conversion. libpng reports errors by a long jump: `guarded` catches
/// it, so what runs inside must not own anything in its frames.
class png_session {
public:
    enum class direction { reading, writing };

    explicit png_session(direction way);
    png_session(const png_session&) = delete;
    png_session& operator=(const png_session&) = delete;
    ~png_session();

    [[nodiscard]] bool made() const { return png_ && info_; }
    [[nodiscard]] png_structp png() const { return png_; }
    [[nodiscard]] png_infop info() const { return info_; }

    /// Runs step(state); false when libpng reported an error.
    template <class State> [[nodiscard]] bool guarded(void (*step)(State&), State& state)
    {
        if (setjmp(png_jmpbuf(png_)) != 0)
            return false;
        step(state);
        return true;
    }

private:
    direction way_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
};

imaging_result png_info(image_io& in, file_info& info);
imaging_result png_load(
    image_io& in, const file_info& info, bitmap_handle& bitmap, load_callback callback, void* user);
imaging_result png_save(image_io& out, const bitmap_handle& bitmap, line_source& lines, std::int32_t quality);

} // namespace klv::imaging
