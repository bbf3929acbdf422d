#include "klv/filters/wmf/wmf_bitmap16.h"

#include "klv/formats/wmf_records.h"

#include <algorithm>
#include <array>

namespace klv {

std::unique_ptr<oMEMDIB> read_wmf_bitmap16(byte_reader& in, COLORREF text_colour, COLORREF background)
{
    wmf_bitmap16 head;
    if (!wmf_read(in, head) || head.width <= 0 || head.height <= 0 || head.planes() != 1)
        return nullptr;
    const auto bits = static_cast<std::uint32_t>(head.depth());
    if (bits != 1 && bits != 24 && bits != 32)
        return nullptr;
    const auto stride = static_cast<std::size_t>(std::max<int>(head.width_bytes, 0));
    const std::size_t used = (static_cast<std::size_t>(head.width) * bits + 7) / 8;
    if (stride < used || !in.holds(static_cast<std::size_t>(head.height), stride))
        return nullptr;

    const auto out_bits = bits == 1 ? 1 : 24;
    std::unique_ptr<oMEMDIB> dib(new oMEMDIB(head.width, head.height, out_bits, model_of_bits(bits), 0));
    if (!dib || !dib->HasPixels())
        return nullptr;
    if (bits == 1) {
        const auto quad = [](COLORREF c) {
            return RGBQUAD{static_cast<std::uint8_t>(c >> 16), static_cast<std::uint8_t>(c >> 8),
                static_cast<std::uint8_t>(c), 0};
        };
        const std::array<RGBQUAD, 2> table{quad(text_colour), quad(background)};
        dib->SetPalette(oDIBPALETTE(table.data(), 2));
    }
    for (std::int32_t row = head.height - 1; row >= 0; --row) {
        const auto source = in.bytes(stride);
        const auto target = dib->line(row);
        if (bits != 32) {
            std::copy_n(source.begin(), std::min(used, target.size()), target.begin());
            continue;
        }
        for (std::size_t x = 0; x < static_cast<std::size_t>(head.width); ++x)
            std::copy_n(source.begin() + static_cast<std::ptrdiff_t>(4 * x), 3,
                target.begin() + static_cast<std::ptrdiff_t>(3 * x));
    }
    return dib;
}

} // namespace klv
