#pragma once

#include "klv/imaging/codec.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace klv::imaging {

/// GraphicsMagick, looked for by name when a file needs it. The module does not link it: without it the
/// formats that it serves are missing and all others work. Pictures travel as Windows bitmap files in memory,
/// which keep palettes, indices and resolution as they are.
///
/// What the library calls a fatal error, small allocations that fail above all, would end the process. It is
/// left behind there, as it is, and never called again: every later conversion answers imaging_no_memory.
/// Threads convert one after the other.
class magick_library {
public:
    /// The library, loaded and started on the first call; null when it is not installed.
    [[nodiscard]] static const magick_library* get();

    /// Converts a file of the named format. size is that of the picture and chooses among the resolutions of
    /// a file that has several; the library takes no more memory than it needs for such a picture.
    [[nodiscard]] imaging_result to_windows_bitmap(const char* format, std::span<const std::uint8_t> file,
        dimension size, std::vector<std::uint8_t>& bitmap_file) const;
    [[nodiscard]] imaging_result from_windows_bitmap(const char* format,
        std::span<const std::uint8_t> bitmap_file, dimension size, std::vector<std::uint8_t>& file) const;

private:
    // The C interface of the library, as its wand has it. A wand is a pointer to nothing we know.
    using wand = void*;
    using ulong = unsigned long;
    struct functions {
        int (*InitializeMagickEx)(const char* path, unsigned options, void* exception);
        unsigned (*MagickSetResourceLimit)(int type, ulong limit);
        wand (*NewMagickWand)();
        unsigned (*DestroyMagickWand)(wand);
        unsigned (*MagickSetFormat)(wand, const char* format);
        unsigned (*MagickSetSize)(wand, ulong columns, ulong rows);
        unsigned (*MagickReadImageBlob)(wand, const unsigned char* bytes, std::size_t size);
        unsigned (*MagickSetImageIndex)(wand, long index);
        unsigned (*MagickSetImageFormat)(wand, const char* format);
        unsigned (*MagickSetImageCompression)(wand, int compression);
        unsigned char* (*MagickWriteImageBlob)(wand, std::size_t* size);
        unsigned (*MagickRelinquishMemory)(void* bytes);
        using fatal_error_handler = void (*)(int severity, const char* reason, const char* description);
        fatal_error_handler (*SetFatalErrorHandler)(fatal_error_handler);
    };
    struct conversion;

    [[nodiscard]] bool load();
    [[nodiscard]] bool find_functions(void* module);
    template <class Function> [[nodiscard]] bool find(void* module, const char* name, Function& function);
    [[nodiscard]] imaging_result convert(const char* from, std::span<const std::uint8_t> in, dimension size,
        const char* to, int compression, std::vector<std::uint8_t>& out) const;

    functions call_{};
};

} // namespace klv::imaging
