#include "klv/filters/raster/imaging_library.h"

#include "klv/platform/module_table.h"

#include <optional>

namespace klv {

namespace {

constinit thread_local std::optional<BMINTERFACE> current;

template <class Function> void look_up(HMODULE module, const char* name, Function& function)
{
    function = reinterpret_cast<Function>(GetProcAddress(module, name));
}

} // namespace

const BMINTERFACE* BMINTERFACE::get() noexcept
{
    if (!current && !current.emplace().load())
        current.reset();
    return current ? &*current : nullptr;
}

void BMINTERFACE::discard() noexcept { current.reset(); }

bool BMINTERFACE::load() noexcept
{
    kernel = LoadLibraryA(imaging::kernel_module_name);
    file = LoadLibraryA(imaging::file_module_name);
    if (!kernel || !file)
        return false;
    look_up(kernel, "L_RedirectIO", RedirectIO);
    look_up(kernel, "L_InitBitmap", InitBitmap);
    look_up(kernel, "L_CreateBitmap", CreateBitmap);
    look_up(kernel, "L_FreeBitmap", FreeBitmap);
    look_up(kernel, "L_ConvertToDIB", ConvertToDIB);
    look_up(kernel, "L_AccessBitmap", AccessBitmap);
    look_up(kernel, "L_ReleaseBitmap", ReleaseBitmap);
    look_up(kernel, "L_GetBitmapColors", GetBitmapColors);
    look_up(kernel, "L_PutBitmapColors", PutBitmapColors);
    look_up(file, "L_SaveFile", SaveFile);
    look_up(file, "L_FileInfo", FileInfo);
    look_up(file, "L_LoadFile", LoadFile);
    look_up(file, "L_EnumDimensions", EnumDimensions);
    look_up(file, "L_SetDimension", SetDimension);
    // A module that lacks an entry point is as good as none.
    return RedirectIO && InitBitmap && CreateBitmap && FreeBitmap && ConvertToDIB && AccessBitmap
        && ReleaseBitmap && GetBitmapColors && PutBitmapColors && SaveFile && FileInfo && LoadFile
        && EnumDimensions && SetDimension;
}

} // namespace klv
