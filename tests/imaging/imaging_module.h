#pragma once

#include "klv/base/byte_writer.h"
#include "klv/imaging/imaging_api.h"
#include "klv/platform/module_table.h"

#include "tests/build_folder.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace klv::test {

using file_bytes = std::vector<std::uint8_t>;

/// The imaging module of the build, reached by its interface alone.
class imaging_module {
public:
    imaging_module()
    {
        MapModule(imaging::file_module_name, klv::test::imaging_module_path().c_str());
        module_ = LoadLibraryA(imaging::file_module_name);
        find("L_RedirectIO", redirect);
        find("L_CreateBitmap", create);
        find("L_InitBitmap", init);
        find("L_PutBitmapColors", put_colours);
        find("L_FileInfo", info);
        find("L_LoadFile", load);
        find("L_SaveFile", save);
        find("L_EnumDimensions", enumerate);
        find("L_SetDimension", set_dimension);
    }
    imaging_module(const imaging_module&) = delete;
    imaging_module& operator=(const imaging_module&) = delete;
    ~imaging_module()
    {
        FreeLibrary(module_);
        UnregisterModule(imaging::file_module_name);
    }

    imaging::L_RedirectIO_t redirect = nullptr;
    imaging::L_CreateBitmap_t create = nullptr;
    imaging::L_InitBitmap_t init = nullptr;
    imaging::L_PutBitmapColors_t put_colours = nullptr;
    imaging::L_FileInfo_t info = nullptr;
    imaging::L_LoadFile_t load = nullptr;
    imaging::L_SaveFile_t save = nullptr;
    imaging::L_EnumDimensions_t enumerate = nullptr;
    imaging::L_SetDimension_t set_dimension = nullptr;

private:
    template <class Function> void find(const char* name, Function& function)
    {
        function = reinterpret_cast<Function>(GetProcAddress(module_, name));
        EXPECT_NE(function, nullptr) << name;
    }
    HINSTANCE module_ = nullptr;
};

/// A stream that the module is redirected to.
struct redirected_bytes {
    file_bytes bytes;
    std::size_t position = 0;

    void install(const imaging_module& module)
    {
        position = 0;
        module.redirect(open, read, write, seek, nullptr, this);
    }
    static std::int32_t open(const char*, std::int32_t, void* self)
    {
        static_cast<redirected_bytes*>(self)->position = 0;
        return 1;
    }
    static std::uint32_t read(std::uint8_t* to, std::uint32_t count, void* self)
    {
        auto& file = *static_cast<redirected_bytes*>(self);
        const std::size_t got = std::min<std::size_t>(count, file.bytes.size() - file.position);
        std::copy_n(file.bytes.data() + file.position, got, to);
        file.position += got;
        return static_cast<std::uint32_t>(got);
    }
    static std::uint32_t write(const std::uint8_t* from, std::uint32_t count, void* self)
    {
        auto& file = *static_cast<redirected_bytes*>(self);
        file.bytes.resize(std::max(file.bytes.size(), file.position + count));
        std::copy_n(from, count, file.bytes.data() + file.position);
        file.position += count;
        return count;
    }
    static std::int32_t seek(std::int32_t offset, std::int32_t origin, void* self)
    {
        auto& file = *static_cast<redirected_bytes*>(self);
        const auto size = static_cast<std::int32_t>(file.bytes.size());
        const std::int32_t base = origin == 0 ? 0
            : origin == 1                     ? static_cast<std::int32_t>(file.position)
                                              : size;
        if (base + offset < 0 || base + offset > size)
            return -1;
        file.position = static_cast<std::size_t>(base + offset);
        return base + offset;
    }
};

/// A bitmap with its pixels, lines in the order of its perspective.
struct image {
    imaging::bitmap_handle handle{};
    file_bytes lines;
    std::int32_t most_bands = INT32_MAX; ///< then the callbacks answer 0

    /// 0xRRGGBB, x from the left and y from the top.
    [[nodiscard]] int colour(std::int32_t x, std::int32_t y) const
    {
        const std::int32_t line = handle.perspective == imaging::bottom_left ? handle.height - 1 - y : y;
        const std::uint8_t* const row
            = lines.data() + static_cast<std::ptrdiff_t>(line) * handle.bytes_per_line;
        const std::int32_t bits = handle.bits_per_pixel;
        if (bits >= 24) {
            const std::uint8_t* const p = row + static_cast<std::ptrdiff_t>(x) * bits / 8;
            return p[2] << 16 | p[1] << 8 | p[0];
        }
        const RGBQUAD& c = handle.colours[row[x * bits / 8] >> (8 - bits - x * bits % 8) & ((1 << bits) - 1)];
        return c.rgbRed << 16 | c.rgbGreen << 8 | c.rgbBlue;
    }
    [[nodiscard]] std::vector<int> colours() const
    {
        std::vector<int> all;
        for (std::int32_t y = 0; y < handle.height && !lines.empty(); ++y)
            for (std::int32_t x = 0; x < handle.width; ++x)
                all.push_back(colour(x, y));
        return all;
    }

    static std::int32_t take(const imaging::file_info&, const imaging::bitmap_handle& handle,
        std::uint8_t* band, std::int32_t row, std::int32_t count, void* self)
    {
        auto& to = *static_cast<image*>(self);
        if (to.most_bands-- <= 0)
            return 0;
        const auto line_bytes = static_cast<std::size_t>(handle.bytes_per_line);
        EXPECT_TRUE(row >= 0 && count > 0 && row + count <= handle.height);
        to.lines.resize(line_bytes * static_cast<std::size_t>(handle.height));
        std::copy_n(band, line_bytes * static_cast<std::size_t>(count),
            to.lines.data() + line_bytes * static_cast<std::size_t>(row));
        return 1;
    }
    static std::int32_t give(const imaging::bitmap_handle& handle, std::uint8_t* band, std::int32_t row,
        std::int32_t count, void* self)
    {
        auto& from = *static_cast<image*>(self);
        if (from.most_bands-- <= 0)
            return 0;
        const auto line_bytes = static_cast<std::size_t>(handle.bytes_per_line);
        EXPECT_TRUE(row >= 0 && count > 0 && row + count <= handle.height);
        std::copy_n(from.lines.data() + line_bytes * static_cast<std::size_t>(row),
            line_bytes * static_cast<std::size_t>(count), band);
        return 1;
    }
};

class imaging_module_test : public ::testing::Test {
protected:
    /// Loads bytes as the filters do. `loaded` keeps what was delivered even when the load failed.
    std::int32_t read(const file_bytes& bytes, image& loaded, imaging::file_info* described = nullptr)
    {
        stream_.bytes = bytes;
        stream_.install(module_);
        imaging::file_info info{};
        std::int32_t result = module_.info("tmp", &info);
        if (described)
            *described = info;
        if (result != imaging::imaging_ok)
            return result;
        const bool deep = info.bits_per_pixel > 8;
        if (module_.init(&loaded.handle, info.width, info.height, deep ? 24 : info.bits_per_pixel)
            != imaging::imaging_ok)
            return imaging::imaging_failed;
        result = module_.load("tmp", &loaded.handle, loaded.handle.bits_per_pixel, 0,
            imaging::load_flags_all_lines, image::take, &loaded);
        loaded.handle.valid = true;
        return result;
    }
    std::int32_t write(image& source, imaging::imaging_format format, file_bytes& bytes,
        std::int32_t quality = imaging::best_quality)
    {
        stream_.bytes.clear();
        stream_.install(module_);
        const std::int32_t result = module_.save("tmp", &source.handle, format, source.handle.bits_per_pixel,
            quality, imaging::save_flags_default, image::give, &source);
        bytes = stream_.bytes;
        return result;
    }
    /// Whether GraphicsMagick, which some formats need, is there: it answers for a Targa file of one pixel.
    bool magick_is_there()
    {
        image probe;
        return read({0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 1, 0, 24, 0, 1, 2, 3}, probe)
            != imaging::imaging_library_missing;
    }

    imaging_module module_;
    redirected_bytes stream_;
};

} // namespace klv::test
