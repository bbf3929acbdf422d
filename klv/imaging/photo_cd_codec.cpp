#include "klv/imaging/magick_codec.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace klv::imaging {

namespace {

constexpr std::size_t name_offset = 2048;
constexpr std::string_view name = "PCD_IPI";
/// In this byte of the image attributes lie the highest stored resolution (bits 2 and 3) and the turn of the
/// picture (bits 0 and 1).
constexpr std::uint32_t attributes_offset = 0xE02;
/// Resolutions of an image pack: a sixteenth, a quarter, base, four and sixteen times base.
constexpr std::array<dimension, 5> resolutions{
    {{192, 128}, {384, 256}, {768, 512}, {1536, 1024}, {3072, 2048}}};
constexpr std::size_t base = 2;
/// Where the pixels of base end; a smaller file has none.
constexpr std::uint32_t base_end = 0x30000 + 768 * 512 * 3 / 2;

struct pack {
    std::size_t highest = base; ///< index of the highest resolution
    bool upright = false; ///< columns and rows are exchanged
};

bool recognises(std::span<const std::uint8_t> start)
{
    return start.size() >= name_offset + name.size()
        && std::ranges::equal(start.subspan(name_offset, name.size()), name);
}

imaging_result read_pack(image_io& in, pack& found)
{
    const std::uint32_t size = in.size();
    std::array<std::uint8_t, 1> attributes{};
    if (size < base_end || !in.seek(attributes_offset) || in.read(attributes) != attributes.size())
        return imaging_bad_data;
    const std::size_t more = attributes[0] >> 2 & 3U;
    found.highest = std::min(base + more, resolutions.size() - 1);
    found.upright = (attributes[0] & 1) != 0;
    return imaging_ok;
}

dimension turned(dimension size, const pack& found)
{
    return found.upright ? dimension{size.height, size.width} : size;
}

/// The resolution for a wanted size: the smallest that is not smaller, else the largest; base without a wish.
dimension chosen(const pack& found, dimension wanted)
{
    if (wanted.width == 0 || wanted.height == 0)
        return turned(resolutions[base], found);
    for (std::size_t i = 0; i < found.highest; ++i) {
        const dimension size = turned(resolutions[i], found);
        if (size.width >= wanted.width && size.height >= wanted.height)
            return size;
    }
    return turned(resolutions[found.highest], found);
}

imaging_result info(image_io& in, file_info& info)
{
    pack found;
    const imaging_result result = read_pack(in, found);
    if (result != imaging_ok)
        return result;
    const dimension size = chosen(found, {info.width, info.height});
    info.width = size.width;
    info.height = size.height;
    info.bits_per_pixel = 24;
    info.perspective = bottom_left;
    return magick_available();
}

imaging_result load(
    image_io& in, const file_info& info, bitmap_handle& bitmap, load_callback callback, void* user)
{
    return magick_load({.format = "PCD"}, in, info, bitmap, callback, user);
}

imaging_result dimensions(image_io& in, std::vector<dimension>& sizes)
{
    pack found;
    const imaging_result result = read_pack(in, found);
    if (result != imaging_ok)
        return result;
    for (std::size_t i = 0; i <= found.highest; ++i)
        sizes.push_back(turned(resolutions[i], found));
    return magick_available();
}

} // namespace

const codec photo_cd_codec{format_photo_cd, recognises, info, load, nullptr, dimensions};

} // namespace klv::imaging
