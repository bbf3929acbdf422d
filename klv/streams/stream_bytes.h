#pragma once

#include "klv/base/buffer.h"

#include <cstdint>
#include <span>

namespace klv {

class vSTREAM;

/// The bytes of a stream from its current position to its end, as they stand there. They lie in the stream
/// itself where it keeps its bytes in memory (the stream must then stay as it is), else in a buffer of this
/// object, which grows with what is really read.
class stream_bytes {
public:
    explicit stream_bytes(vSTREAM& stream) noexcept;

    [[nodiscard]] std::span<const std::uint8_t> bytes() const noexcept { return bytes_; }
    /// False when memory ran out; bytes() then holds what had been read.
    [[nodiscard]] bool complete() const noexcept { return complete_; }

private:
    std::span<const std::uint8_t> bytes_;
    vBUFFER<std::uint8_t> buffer_;
    bool complete_ = true;
};

} // namespace klv
