#pragma once

#include "klv/base/types.h"

#include <cstdint>

/// The interface of the raster imaging module: the records and entry points by which the library reaches it.
/// The module is loaded by name; nothing of it is linked. Every function answers imaging_ok (1) on success.
/// Threads may call it at the same time, each with bitmaps and streams of its own: what L_RedirectIO and
/// L_SetDimension choose holds for the thread that calls them.
namespace klv::imaging {

/// The names under which the module is asked for.
inline constexpr const char kernel_module_name[] = "LTKRN80N.DLL";
inline constexpr const char file_module_name[] = "LTFIL80N.DLL";
inline constexpr const char image_module_name[] = "LTIMG80N.DLL";

enum imaging_result : std::int32_t {
    imaging_ok = 1,
    imaging_failed = 0,
    imaging_no_memory = -1,
    imaging_read_error = -2,
    imaging_bad_data = -3,
    imaging_unsupported = -4, ///< no such format here, or a variant that is not handled
    imaging_write_error = -5,
    imaging_aborted = -6, ///< a load or save callback answered 0
    imaging_library_missing = -7, ///< the library that serves the format is not installed
};

/// File format numbers.
enum imaging_format : std::uint16_t {
    format_unknown = 0,
    format_pcx = 1,
    format_gif = 2,
    format_tiff = 3,
    format_targa = 4,
    format_bmp = 6,
    format_jpeg = 10,
    format_photo_cd = 57,
    format_png = 75,
    format_photoshop = 76,
    format_flashpix = 80,
};

/// Where the first line of a bitmap lies.
enum view_perspective : std::int32_t { top_left = 1, bottom_left = 2 };

inline constexpr std::uint32_t load_flags_all_lines = 9;
inline constexpr std::uint32_t save_flags_default = 2;
inline constexpr std::int32_t best_quality = 255;
inline constexpr std::int32_t conventional_memory = 1;
/// The name under which a redirected stream is written or recognised.
inline constexpr const char redirected_name[] = "tmp";

/// What a file holds, as it will be delivered.
struct file_info {
    std::uint16_t format;
    std::int32_t width;
    std::int32_t height;
    std::int32_t bits_per_pixel; ///< 1, 4, 8, 16, 24 or 32; the last three are delivered as 24
    std::int32_t x_resolution; ///< dots per inch, 0 when the file does not say
    std::int32_t y_resolution;
    std::int32_t perspective;
};

/// A bitmap on its way: what its lines look like. Lines are in DIB layout (blue first, padded to a multiple
/// of 4 bytes) and travel in bands through the callbacks, so the record owns no pixels unless
/// L_AccessBitmap made room for them.
struct bitmap_handle {
    std::int32_t width;
    std::int32_t height;
    std::int32_t bits_per_pixel;
    std::int32_t bytes_per_line;
    std::int32_t x_resolution; ///< dots per inch, written to formats that can hold it; 0 for none
    std::int32_t y_resolution;
    std::int32_t perspective;
    std::int32_t colour_order;
    std::uint32_t colour_count;
    RGBQUAD colours[256];
    bool valid;
};

struct dimension {
    std::int32_t width;
    std::int32_t height;
};

using open_callback = std::int32_t (*)(const char* name, std::int32_t mode, void* user);
using read_callback = std::uint32_t (*)(std::uint8_t* bytes, std::uint32_t count, void* user);
using write_callback = std::uint32_t (*)(const std::uint8_t* bytes, std::uint32_t count, void* user);
/// origin 0 start, 1 current position, 2 end. Answers the new position, or -1.
using seek_callback = std::int32_t (*)(std::int32_t offset, std::int32_t origin, void* user);
using close_callback = std::int32_t (*)(void* user);

/// Receives lines [row, row + lines) in reading order, which the handle's perspective tells apart. May
/// change the band's bytes. 0 stops the load.
using load_callback = std::int32_t (*)(const file_info& info, const bitmap_handle& bitmap, std::uint8_t* band,
    std::int32_t row, std::int32_t lines, void* user);
/// Fills in lines [row, row + lines), counted as the handle's perspective says. 0 stops the save.
using save_callback = std::int32_t (*)(
    const bitmap_handle& bitmap, std::uint8_t* band, std::int32_t row, std::int32_t lines, void* user);

extern "C" {
// Kernel. Null callbacks turn this thread's redirection off: names are file names then.
using L_RedirectIO_t = std::int32_t (*)(
    open_callback, read_callback, write_callback, seek_callback, close_callback, void* user);
using L_InitBitmap_t
    = std::int32_t (*)(bitmap_handle*, std::int32_t width, std::int32_t height, std::int32_t bits_per_pixel);
using L_CreateBitmap_t = std::int32_t (*)(bitmap_handle*, std::int32_t memory, std::int32_t width,
    std::int32_t height, std::int32_t bits_per_pixel, std::int32_t colour_order, const RGBQUAD* colours,
    std::int32_t perspective);
using L_FreeBitmap_t = std::int32_t (*)(bitmap_handle*);
/// The info header that the bitmap has as a DIB.
using L_ConvertToDIB_t = std::int32_t (*)(const bitmap_handle*, BITMAPINFOHEADER*);
using L_AccessBitmap_t = std::int32_t (*)(bitmap_handle*);
using L_ReleaseBitmap_t = std::int32_t (*)(bitmap_handle*);
using L_GetBitmapColors_t
    = std::int32_t (*)(const bitmap_handle*, std::uint32_t first, std::uint32_t count, RGBQUAD*);
using L_PutBitmapColors_t
    = std::int32_t (*)(bitmap_handle*, std::uint32_t first, std::uint32_t count, const RGBQUAD*);

// Files.
using L_FileInfo_t = std::int32_t (*)(const char* name, file_info*);
using L_LoadFile_t = std::int32_t (*)(const char* name, bitmap_handle*, std::int32_t bits_per_pixel,
    std::int32_t colour_order, std::uint32_t flags, load_callback, void* user);
using L_SaveFile_t = std::int32_t (*)(const char* name, bitmap_handle*, std::uint16_t format,
    std::int32_t bits_per_pixel, std::int32_t quality, std::uint32_t flags, save_callback, void* user);
/// The resolutions of a multi-resolution file, smallest first; *count is the capacity and then the number
/// stored.
using L_EnumDimensions_t
    = std::int32_t (*)(const char* name, std::uint16_t format, dimension* table, std::uint32_t* count);
/// Chooses the resolution that this thread describes and reads files of the format in from now on: the
/// smallest that is not smaller, else the largest. 0 by 0 leaves the choice to the format.
using L_SetDimension_t = std::int32_t (*)(std::uint16_t format, std::int32_t width, std::int32_t height);
}

} // namespace klv::imaging
