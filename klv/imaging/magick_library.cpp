#include "klv/imaging/magick_library.h"

#include <array>
#include <csetjmp>
#include <cstdlib>
#include <memory>
#include <mutex>

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

/// Held while the library works: how much memory it may take is said for the process.
constinit std::mutex one_at_a_time;
/// Once it has gone wrong there is no second time.
bool gave_up = false;

/// Where the library goes instead of ending the process. The handler hears of fatal errors in every thread
/// that uses the library, also of those that the module knows nothing of.
thread_local std::jmp_buf behind_fatal_error;
constinit thread_local bool in_library = false;

void on_fatal_error(int, const char*, const char*)
{
    if (!in_library)
        std::abort();
    std::longjmp(behind_fatal_error, 1);
}

/// Runs step(state), which must not own anything in its frames; false when the library gave up, now or
/// before. One at a time in the process.
template <class State> [[nodiscard]] bool guarded(void (*step)(State&), State& state)
{
    if (gave_up)
        return false;
    if (setjmp(behind_fatal_error) != 0) {
        in_library = false;
        gave_up = true;
        return false;
    }
    in_library = true;
    step(state);
    in_library = false;
    return true;
}

} // namespace

/// One picture on its way through the library.
struct magick_library::conversion {
    const functions& call;
    const char* from;
    std::span<const std::uint8_t> in;
    dimension size;
    const char* to;
    int compression;
    wand picture = nullptr;
    bool was_read = false;
    unsigned char* bytes = nullptr;
    std::size_t byte_count = 0;

    /// Readers go on behind the picture, where damaged files promise others of any size.
    void limit_pixels()
    {
        call.MagickSetResourceLimit(
            pixels_resource, static_cast<ulong>(std::int64_t{size.width} * size.height + spare_pixels));
    }
    [[nodiscard]] bool read()
    {
        if (size.width > 0 && size.height > 0)
            call.MagickSetSize(picture, static_cast<ulong>(size.width), static_cast<ulong>(size.height));
        return call.MagickSetFormat(picture, from) && call.MagickReadImageBlob(picture, in.data(), in.size())
            && call.MagickSetImageIndex(picture, 0);
    }
    void write()
    {
        if (call.MagickSetImageFormat(picture, to) && call.MagickSetImageCompression(picture, compression))
            bytes = call.MagickWriteImageBlob(picture, &byte_count);
    }

    static void run(conversion& self)
    {
        self.limit_pixels();
        self.picture = self.call.NewMagickWand();
        self.was_read = self.picture && self.read();
        if (self.was_read)
            self.write();
    }
    static void end(conversion& self)
    {
        if (self.bytes)
            self.call.MagickRelinquishMemory(self.bytes);
        if (self.picture)
            self.call.DestroyMagickWand(self.picture);
    }
};

template <class Function> bool magick_library::find(void* module, const char* name, Function& function)
{
    function = reinterpret_cast<Function>(dlsym(module, name));
    return function != nullptr;
}

bool magick_library::find_functions(void* module)
{
#define KLV_FIND(NAME) find(module, #NAME, call_.NAME)
    return KLV_FIND(InitializeMagickEx) && KLV_FIND(MagickSetResourceLimit) && KLV_FIND(NewMagickWand)
        && KLV_FIND(DestroyMagickWand) && KLV_FIND(MagickSetFormat) && KLV_FIND(MagickSetSize)
        && KLV_FIND(MagickReadImageBlob) && KLV_FIND(MagickSetImageIndex) && KLV_FIND(MagickSetImageFormat)
        && KLV_FIND(MagickSetImageCompression) && KLV_FIND(MagickWriteImageBlob)
        && KLV_FIND(MagickRelinquishMemory) && KLV_FIND(SetFatalErrorHandler);
#undef KLV_FIND
}

bool magick_library::load()
{
    void* module = nullptr;
    for (const char* const name : library_names)
        if (!module)
            module = dlopen(name, RTLD_NOW | RTLD_LOCAL);
    if (!module || !find_functions(module))
        return false;
    std::array<char, exception_bytes> exception{};
    if (!call_.InitializeMagickEx(nullptr, no_signal_handlers, exception.data()))
        return false;
    call_.SetFatalErrorHandler(on_fatal_error);
    // The caller's process keeps its signal handlers and gets no threads that it did not ask for.
    call_.MagickSetResourceLimit(threads_resource, 1);
    return true;
}

const magick_library* magick_library::get()
{
    const std::scoped_lock lock(one_at_a_time);
    static magick_library library;
    static bool loaded = false;
    loaded = loaded || library.load();
    return loaded ? &library : nullptr;
}

imaging_result magick_library::convert(const char* from, std::span<const std::uint8_t> in, dimension size,
    const char* to, int compression, std::vector<std::uint8_t>& out) const
{
    const std::scoped_lock lock(one_at_a_time);
    conversion work{call_, from, in, size, to, compression};
    if (!guarded(conversion::run, work))
        return imaging_no_memory;
    const auto end = [](conversion* ended) { (void)guarded(conversion::end, *ended); };
    const std::unique_ptr<conversion, decltype(end)> ending(&work, end);
    if (!work.picture)
        return imaging_no_memory;
    if (!work.was_read)
        return imaging_bad_data;
    if (!work.bytes)
        return imaging_failed;
    out.assign(work.bytes, work.bytes + work.byte_count);
    return imaging_ok;
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
