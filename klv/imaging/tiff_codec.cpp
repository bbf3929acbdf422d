#include "klv/imaging/tiff_file.h"

#include <algorithm>
#include <array>

namespace klv::imaging {

namespace {

/// Byte order and the number 42, or 43 in files with 64-bit offsets.
constexpr std::array<std::array<std::uint8_t, 4>, 4> signatures{
    {{'I', 'I', 42, 0}, {'M', 'M', 0, 42}, {'I', 'I', 43, 0}, {'M', 'M', 0, 43}}};

bool tiff_recognises(std::span<const std::uint8_t> start)
{
    return std::ranges::any_of(signatures, [&](const auto& signature) {
        return start.size() > signature.size()
            && std::ranges::equal(signature, start.first(signature.size()));
    });
}

} // namespace

const codec tiff_codec{format_tiff, tiff_recognises, tiff_info, tiff_load, tiff_save, nullptr};

} // namespace klv::imaging
