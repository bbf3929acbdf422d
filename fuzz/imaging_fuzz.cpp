// The front of the imaging module: whatever the bytes are, they are described, listed and loaded as the
// filters do it, and what is delivered is what was described.
#include "klv/imaging/imaging_api.h"
#include "klv/platform/module_table.h"

#include "tests/build_folder.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

using namespace klv;
using namespace klv::imaging;

namespace {

/// Larger pictures are described but not loaded, so that a run stays short.
constexpr std::int64_t loaded_pixels = 1 << 21;

void require(bool condition)
{
    if (!condition)
        std::abort();
}

struct module_entries {
    L_RedirectIO_t redirect = nullptr;
    L_InitBitmap_t init = nullptr;
    L_FileInfo_t info = nullptr;
    L_LoadFile_t load = nullptr;
    L_EnumDimensions_t enumerate = nullptr;

    module_entries()
    {
        MapModule(file_module_name, klv::test::imaging_module_path().c_str());
        const HINSTANCE module = LoadLibraryA(file_module_name);
        find(module, "L_RedirectIO", redirect);
        find(module, "L_InitBitmap", init);
        find(module, "L_FileInfo", info);
        find(module, "L_LoadFile", load);
        find(module, "L_EnumDimensions", enumerate);
    }
    template <class Function> static void find(HINSTANCE module, const char* name, Function& function)
    {
        function = reinterpret_cast<Function>(GetProcAddress(module, name));
        require(function != nullptr);
    }
};

struct input {
    std::span<const std::uint8_t> bytes;
    std::size_t position = 0;
};

std::uint32_t read_input(std::uint8_t* to, std::uint32_t count, void* self)
{
    auto& in = *static_cast<input*>(self);
    const std::size_t got = std::min<std::size_t>(count, in.bytes.size() - in.position);
    std::copy_n(in.bytes.begin() + static_cast<std::ptrdiff_t>(in.position), got, to);
    in.position += got;
    return static_cast<std::uint32_t>(got);
}

std::int32_t open_input(const char*, std::int32_t, void* self)
{
    static_cast<input*>(self)->position = 0;
    return 1;
}

std::int32_t seek_input(std::int32_t offset, std::int32_t origin, void* self)
{
    auto& in = *static_cast<input*>(self);
    const auto size = static_cast<std::int64_t>(in.bytes.size());
    const std::int64_t base = origin == 0 ? 0 : origin == 1 ? static_cast<std::int64_t>(in.position) : size;
    if (base + offset < 0 || base + offset > size)
        return -1;
    in.position = static_cast<std::size_t>(base + offset);
    return static_cast<std::int32_t>(base + offset);
}

struct delivery {
    std::int32_t next_row = 0;
    std::uint32_t sum = 0;
};

/// Lines come in order, once each, whole.
std::int32_t take_lines(const file_info& info, const bitmap_handle& handle, std::uint8_t* band,
    std::int32_t row, std::int32_t lines, void* self)
{
    auto& taken = *static_cast<delivery*>(self);
    require(handle.width == info.width && handle.height == info.height);
    require(row == taken.next_row && lines > 0 && row + lines <= handle.height);
    taken.next_row += lines;
    const auto bytes = static_cast<std::size_t>(handle.bytes_per_line) * static_cast<std::size_t>(lines);
    for (const std::uint8_t byte : std::span(band, bytes))
        taken.sum ^= byte;
    return 1;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const module_entries module;
    input in{{data, size}};
    module.redirect(open_input, read_input, nullptr, seek_input, nullptr, &in);
    file_info info{};
    if (module.info("tmp", &info) != imaging_ok)
        return 0;
    require(info.width > 0 && info.height > 0);
    for (const imaging_format format : {format_flashpix, format_photo_cd}) {
        dimension sizes[29];
        std::uint32_t count = 29;
        module.enumerate("tmp", format, sizes, &count);
        require(count <= 29);
    }
    if (std::int64_t{info.width} * info.height > loaded_pixels)
        return 0;
    bitmap_handle handle{};
    const std::int32_t bits = info.bits_per_pixel > 8 ? 24 : info.bits_per_pixel;
    require(module.init(&handle, info.width, info.height, bits) == imaging_ok);
    delivery taken;
    const std::int32_t loaded
        = module.load("tmp", &handle, bits, 0, load_flags_all_lines, take_lines, &taken);
    require(loaded != imaging_ok || taken.next_row == info.height);
    require(handle.bits_per_pixel == bits);
    return 0;
}
