#pragma once

#include "klv/imaging/codec.h"

#include <cstdint>
#include <memory>

#include <tiffio.h>

namespace klv::imaging {

/// A TIFF file as libtiff sees it, over the stream that is being read or written. Several may stand over the
/// same stream: each has a position of its own. Messages of libtiff go nowhere.
class tiff_file {
public:
    enum class access { reading, writing };

    tiff_file(image_io& stream, access how);
    tiff_file(const tiff_file&) = delete;
    tiff_file& operator=(const tiff_file&) = delete;
    ~tiff_file();

    [[nodiscard]] bool is_open() const { return tiff_ != nullptr; }
    [[nodiscard]] TIFF* handle() const { return tiff_; }
    /// Ends a file that was written; false when some of it was not.
    [[nodiscard]] bool close();

    /// The value of a tag, or its default, or fallback when it has none.
    template <class T> [[nodiscard]] T tag(std::uint32_t number, T fallback) const
    {
        T value{};
        return TIFFGetFieldDefaulted(tiff_, number, &value) ? value : fallback;
    }

private:
    static tmsize_t read(thandle_t self, void* bytes, tmsize_t count);
    static tmsize_t write(thandle_t self, void* bytes, tmsize_t count);
    static toff_t seek(thandle_t self, toff_t offset, int origin);
    static toff_t size(thandle_t self);
    static int close(thandle_t self);
    [[nodiscard]] bool fill_up_to_position();

    image_io& stream_;
    std::uint64_t size_ = 0;
    std::uint64_t position_ = 0;
    bool failed_ = false;
    TIFF* tiff_ = nullptr;
};

imaging_result tiff_info(image_io& in, file_info& info);
imaging_result tiff_load(
    image_io& in, const file_info& info, bitmap_handle& bitmap, load_callback callback, void* user);
imaging_result tiff_save(
    image_io& out, const bitmap_handle& bitmap, line_source& lines, std::int32_t quality);

} // namespace klv::imaging
