#include "filters/tiff_packbits.h"

#include <algorithm>

namespace klv {

namespace {

constexpr std::size_t longest_packet = 1 + 128;
constexpr int nothing = -128;

} // namespace

oFILTER_STATUS ReadPackedBits(tiff_cursor& in, std::span<std::uint8_t> row)
{
    auto rest = row;
    while (!rest.empty()) {
        const auto packet = in.ahead(longest_packet);
        if (packet.empty())
            return oFILTER_READ_ERROR;
        const int count = static_cast<std::int8_t>(packet[0]);
        if (count == nothing) {
            in.skip(1);
            continue;
        }
        const bool literal = count >= 0;
        const auto length = static_cast<std::size_t>(literal ? count + 1 : 1 - count);
        const std::size_t stored = literal ? length : 1;
        if (length > rest.size())
            return oFILTER_UNSUPPORTED;
        if (packet.size() < 1 + stored)
            return oFILTER_READ_ERROR;
        if (literal)
            std::copy_n(packet.begin() + 1, length, rest.begin());
        else
            std::fill_n(rest.begin(), length, packet[1]);
        in.skip(1 + stored);
        rest = rest.subspan(length);
    }
    return oFILTER_OK;
}

} // namespace klv
