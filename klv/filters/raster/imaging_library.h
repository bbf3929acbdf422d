#pragma once

#include "klv/base/types.h"
#include "klv/imaging/imaging_api.h"

namespace klv {

/// What is not installed when a conversion fails for want of a library.
enum class missing_library : int {
    none,
    imaging_module, ///< the module itself
    format_library, ///< the library by which the module serves the format
};

/// The imaging module as the bitmap filters see it: its module handles and entry points. One record for each
/// thread, made when a conversion needs it and discarded with any bitmap filter of the thread; the modules
/// stay loaded.
class BMINTERFACE {
public:
    /// The record, made on first use. Null when the module is not there; the next call tries again.
    static const BMINTERFACE* get() noexcept;
    static void discard() noexcept;

    HMODULE kernel = nullptr;
    HMODULE file = nullptr;

    imaging::L_RedirectIO_t RedirectIO = nullptr;
    imaging::L_InitBitmap_t InitBitmap = nullptr;
    imaging::L_CreateBitmap_t CreateBitmap = nullptr;
    imaging::L_FreeBitmap_t FreeBitmap = nullptr;
    imaging::L_ConvertToDIB_t ConvertToDIB = nullptr;
    imaging::L_AccessBitmap_t AccessBitmap = nullptr;
    imaging::L_ReleaseBitmap_t ReleaseBitmap = nullptr;
    imaging::L_GetBitmapColors_t GetBitmapColors = nullptr;
    imaging::L_PutBitmapColors_t PutBitmapColors = nullptr;

    imaging::L_SaveFile_t SaveFile = nullptr;
    imaging::L_FileInfo_t FileInfo = nullptr;
    imaging::L_LoadFile_t LoadFile = nullptr;
    imaging::L_EnumDimensions_t EnumDimensions = nullptr;
    imaging::L_SetDimension_t SetDimension = nullptr;

private:
    [[nodiscard]] bool load() noexcept;
};

} // namespace klv
