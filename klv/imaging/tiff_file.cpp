#include "klv/imaging/tiff_file.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <limits>
#include <new>

namespace klv::imaging {

namespace {

int no_message(TIFF*, void*, const char*, const char*, va_list) { return 1; }

struct free_options {
    void operator()(TIFFOpenOptions* options) const { TIFFOpenOptionsFree(options); }
};

tiff_file& file_of(thandle_t self) { return *static_cast<tiff_file*>(self); }

} // namespace

tiff_file::tiff_file(image_io& stream, access how)
    : stream_(stream)
    , size_(how == access::reading ? stream.size() : 0)
{
    const std::unique_ptr<TIFFOpenOptions, free_options> options(TIFFOpenOptionsAlloc());
    if (!options)
        throw std::bad_alloc();
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), no_message, nullptr);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), no_message, nullptr);
    // Read without mapping; written little-endian.
    const char* const mode = how == access::reading ? "rm" : "wl";
    tiff_ = TIFFClientOpenExt(
        "image", mode, this, read, write, seek, close, size, nullptr, nullptr, options.get());
}

tiff_file::~tiff_file()
{
    if (tiff_)
        TIFFClose(tiff_);
}

bool tiff_file::close()
{
    const bool written = TIFFFlush(tiff_) != 0;
    TIFFClose(tiff_);
    tiff_ = nullptr;
    return written && !failed_;
}

tmsize_t tiff_file::read(thandle_t self, void* bytes, tmsize_t count)
{
    tiff_file& file = file_of(self);
    if (count <= 0 || file.position_ > std::numeric_limits<std::uint32_t>::max()
        || !file.stream_.seek(static_cast<std::uint32_t>(file.position_)))
        return 0;
    const std::size_t got
        = file.stream_.read({static_cast<std::uint8_t*>(bytes), static_cast<std::size_t>(count)});
    file.position_ += got;
    return static_cast<tmsize_t>(got);
}

tmsize_t tiff_file::write(thandle_t self, void* bytes, tmsize_t count)
{
    tiff_file& file = file_of(self);
    const std::span<const std::uint8_t> wanted(
        static_cast<const std::uint8_t*>(bytes), static_cast<std::size_t>(std::max<tmsize_t>(count, 0)));
    if (!file.fill_up_to_position() || !file.stream_.seek(static_cast<std::uint32_t>(file.position_))
        || !file.stream_.write(wanted)) {
        file.failed_ = true;
        return 0;
    }
    file.position_ += wanted.size();
    file.size_ = std::max(file.size_, file.position_);
    return count;
}

/// libtiff writes what a directory refers to before the directory itself; not every stream moves past its
/// end.
bool tiff_file::fill_up_to_position()
{
    constexpr std::array<std::uint8_t, 1024> zeros{};
    constexpr std::uint64_t most_gap = 1 << 20;
    if (position_ > std::numeric_limits<std::uint32_t>::max() || position_ > size_ + most_gap)
        return false;
    if (position_ > size_ && !stream_.seek(static_cast<std::uint32_t>(size_)))
        return false;
    while (position_ > size_) {
        const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(position_ - size_, zeros.size()));
        if (!stream_.write(std::span(zeros).first(count)))
            return false;
        size_ += count;
    }
    return true;
}

toff_t tiff_file::seek(thandle_t self, toff_t offset, int origin)
{
    tiff_file& file = file_of(self);
    const std::uint64_t base = origin == SEEK_SET ? 0 : origin == SEEK_CUR ? file.position_ : file.size_;
    file.position_ = base + offset;
    return file.position_;
}

toff_t tiff_file::size(thandle_t self) { return file_of(self).size_; }

int tiff_file::close(thandle_t) { return 0; }

} // namespace klv::imaging
