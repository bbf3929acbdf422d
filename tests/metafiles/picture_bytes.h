#pragma once

#include "klv/streams/memory_stream.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace klv {

/// Everything in a stream, wherever it stands; it is left where it was.
inline std::vector<std::uint8_t> bytes_of(vSTREAM& stream)
{
    const std::uint32_t position = stream.CurrentPos();
    std::vector<std::uint8_t> bytes(stream.Size());
    stream.MoveFromStart(0);
    stream.ReadPlain(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    stream.MoveFromStart(position);
    return bytes;
}

inline std::string hex(const std::vector<std::uint8_t>& bytes, std::size_t from = 0)
{
    std::string text;
    char digits[4];
    for (std::size_t i = from; i < bytes.size(); ++i) {
        std::snprintf(digits, sizeof digits, "%02x ", bytes[i]);
        text += digits;
    }
    if (!text.empty())
        text.pop_back();
    return text;
}

inline void fill_stream(vSTREAM& stream, const std::vector<std::uint8_t>& bytes)
{
    stream.WritePlain(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    stream.MoveFromStart(0);
}

} // namespace klv
