#include "klv/filters/tiff/tiff_packbits.h"

#include "klv/formats/packbits.h"

#include <array>
#include <cstring>

namespace klv {

namespace {

constexpr std::size_t longest_packet = 1 + 128;

/// Where there is room for it, bytes are written in whole pieces, whose excess the next packet overwrites.
constexpr std::size_t piece = 16;
using piece_bytes = std::array<std::uint8_t, piece>;

/// The place in a row up to which it is decoded.
struct row_end {
    std::uint8_t* to;
    std::uint8_t* end;

    [[nodiscard]] std::size_t room() const { return static_cast<std::size_t>(end - to); }

    void repeat(std::uint8_t byte, std::size_t count)
    {
        if (count + piece <= room()) {
            piece_bytes bytes;
            bytes.fill(byte);
            for (std::size_t i = 0; i < count; i += piece)
                std::memcpy(to + i, bytes.data(), piece);
        } else {
            std::memset(to, byte, count);
        }
        to += count;
    }

    /// A piece more than count bytes may be read from `from` when padded.
    void copy(const std::uint8_t* from, std::size_t count, bool padded)
    {
        if (padded && count + piece <= room())
            for (std::size_t i = 0; i < count; i += piece)
                std::memcpy(to + i, from + i, piece);
        else
            std::memcpy(to, from, count);
        to += count;
    }
};

} // namespace

oFILTER_STATUS read_packbits_row(tiff_cursor& in, std::span<std::uint8_t> row)
{
    row_end out{row.data(), row.data() + row.size()};
    while (out.room() != 0) {
        const auto window = in.ahead(longest_packet + piece);
        if (window.empty())
            return oFILTER_READ_ERROR;
        const std::uint8_t* from = window.data();
        const std::uint8_t* const end = from + window.size();
        const bool padded = window.size() >= longest_packet + piece;
        // With less than a packet and a piece left, the window is looked at anew.
        do {
            const auto packet = packbits_packet::of(*from++);
            if (packet.length > out.room())
                return oFILTER_UNSUPPORTED;
            if (static_cast<std::size_t>(end - from) < packet.stored())
                return oFILTER_READ_ERROR;
            if (packet.repeats)
                out.repeat(*from, packet.length);
            else
                out.copy(from, packet.length, padded);
            from += packet.stored();
        } while (out.room() != 0 && end - from >= static_cast<std::ptrdiff_t>(longest_packet + piece));
        in.skip_to(from);
    }
    return oFILTER_OK;
}

} // namespace klv
