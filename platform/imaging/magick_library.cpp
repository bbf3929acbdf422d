#include "platform/imaging/magick_library.h"

#include <array>
#include <memory>

#include <dlfcn.h>

namespace klv::imaging {

namespace {

/// With 16 bits a sample, as distributions build it, or with 8.
constexpr std::array library_names{
    "libGraphicsMagickWand-Q16.so.2", "libGraphicsMagickWand-Q8.so.2", "libGraphicsMagickWand.so.2"};

constexpr unsigned no_signal_handlers = 1;
constexpr int pixels_resource = 5;
constexpr int threads_resource = 6;
/// Pixels that a reader may want beside those of the picture itself.
constexpr std::int64_t spare_pixels = 1 << 20;
/// No compression, and the one that the target format is known for.
constexpr int uncompressed = 1;
constexpr int as_usual = 0;
/// Room for the exception record that the library wants to be given.
constexpr std::size_t exception_bytes = 512;

} // namespace

/// One picture inside the library.
class magick_library::picture {
public:
    explicit picture(const functions& call)
        : call_(call)
        , wand_(call.NewMagickWand())
    {
    }
    picture(const picture&) = delete;
    picture& operator=(const picture&) = delete;
    ~picture()
    {
        if (wand_)
            call_.DestroyMagickWand(wand_);
    }

    [[nodiscard]] bool made() const { return wand_ != nullptr; }
    [[nodiscard]] bool read(const char* format, std::span<const std::uint8_t> file, dimension size)
    {
        if (size.width > 0 && size.height > 0)
            call_.MagickSetSize(wand_, static_cast<ulong>(size.width), static_cast<ulong>(size.height));
        return call_.MagickSetFormat(wand_, format)
            && call_.MagickReadImageBlob(wand_, file.data(), file.size())
            && call_.MagickSetImageIndex(wand_, 0);
    }
    [[nodiscard]] bool write(const char* format, int compression, std::vector<std::uint8_t>& file)
    {
        if (!call_.MagickSetImageFormat(wand_, format)
            || !call_.MagickSetImageCompression(wand_, compression))
            return false;
        std::size_t size = 0;
        const std::unique_ptr<unsigned char, release> bytes(
            call_.MagickWriteImageBlob(wand_, &size), release{call_});
        if (!bytes)
            return false;
        file.assign(bytes.get(), bytes.get() + size);
        return true;
    }

private:
    struct release {
        const functions& call;
        void operator()(unsigned char* bytes) const { call.MagickRelinquishMemory(bytes); }
    };

    const functions& call_;
    wand wand_;
};

template <class Function> bool magick_library::find(void* module, const char* name, Function& function)
{
    function = reinterpret_cast<Function>(dlsym(module, name));
    return function != nullptr;
}

bool magick_library::load()
{
    void* module = nullptr;
    for (const char* const name : library_names)
        if (!module)
            module = dlopen(name, RTLD_NOW | RTLD_LOCAL);
    if (!module)
        return false;
#define KLV_FIND(NAME) find(module, #NAME, call_.NAME)
    const bool complete = KLV_FIND(InitializeMagickEx) && KLV_FIND(MagickSetResourceLimit)
        && KLV_FIND(NewMagickWand) && KLV_FIND(DestroyMagickWand) && KLV_FIND(MagickSetFormat)
        && KLV_FIND(MagickSetSize) && KLV_FIND(MagickReadImageBlob) && KLV_FIND(MagickSetImageIndex)
        && KLV_FIND(MagickSetImageFormat) && KLV_FIND(MagickSetImageCompression)
        && KLV_FIND(MagickWriteImageBlob) && KLV_FIND(MagickRelinquishMemory);
#undef KLV_FIND
    if (!complete)
        return false;
    std::array<char, exception_bytes> exception{};
    if (!call_.InitializeMagickEx(nullptr, no_signal_handlers, exception.data()))
        return false;
    // The caller's process keeps its signal handlers and gets no threads that it did not ask for.
    call_.MagickSetResourceLimit(threads_resource, 1);
    return true;
}

const magick_library* magick_library::get()
{
    static magick_library library;
    static bool loaded = false;
    loaded = loaded || library.load();
    return loaded ? &library : nullptr;
}

/// Readers go on behind the picture, where damaged files promise others of any size.
void magick_library::limit_pixels(dimension size) const
{
    call_.MagickSetResourceLimit(
        pixels_resource, static_cast<ulong>(std::int64_t{size.width} * size.height + spare_pixels));
}

imaging_result magick_library::convert(const char* from, std::span<const std::uint8_t> in, dimension size,
    const char* to, int compression, std::vector<std::uint8_t>& out) const
{
    picture image(call_);
    if (!image.made())
        return imaging_no_memory;
    limit_pixels(size);
    if (!image.read(from, in, size))
        return imaging_bad_data;
    return image.write(to, compression, out) ? imaging_ok : imaging_failed;
}

imaging_result magick_library::to_windows_bitmap(const char* format, std::span<const std::uint8_t> file,
    dimension size, std::vector<std::uint8_t>& bitmap_file) const
{
    return convert(format, file, size, "BMP", uncompressed, bitmap_file);
}

imaging_result magick_library::from_windows_bitmap(const char* format,
    std::span<const std::uint8_t> bitmap_file, dimension size, std::vector<std::uint8_t>& file) const
{
    return convert("BMP", bitmap_file, size, format, as_usual, file);
}

} // namespace klv::imaging
