#include "klv/streams/compression/compression_frame.h"

#include "klv/base/byte_reader.h"

namespace klv {

bool compression_frame::begins(std::span<const std::uint8_t> bytes) noexcept
{
    byte_reader in(bytes);
    return in.u32le() == marker && in.ok();
}

std::optional<compression_frame> compression_frame::read(std::span<const std::uint8_t> bytes) noexcept
{
    byte_reader in(bytes);
    const bool marked = in.u32le() == marker;
    const compression_frame frame{in.u32le()};
    return marked && in.ok() ? std::optional(frame) : std::nullopt;
}

std::array<std::uint8_t, compression_frame::header_size> compression_frame::header() const noexcept
{
    std::array<std::uint8_t, header_size> bytes;
    for (std::uint32_t i = 0; i < marker_size; ++i) {
        bytes[i] = static_cast<std::uint8_t>(marker >> (8 * i) & 0xFF);
        bytes[marker_size + i] = static_cast<std::uint8_t>(size >> (8 * i) & 0xFF);
    }
    return bytes;
}

} // namespace klv
