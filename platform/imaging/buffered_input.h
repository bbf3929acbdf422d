#pragma once

#include "platform/imaging/image_io.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace klv::imaging {

/// Reads a file forward, a few bytes at a time.
class buffered_input {
public:
    explicit buffered_input(image_io& in)
        : in_(in)
        , buffer_(std::size_t{1} << 16)
    {
    }

    /// Fills bytes; false when the file ends before, with what there was at their start.
    [[nodiscard]] bool read(std::span<std::uint8_t> bytes)
    {
        while (!bytes.empty()) {
            if (at_ == end_) {
                at_ = 0;
                end_ = in_.read(buffer_);
                if (end_ == 0)
                    return false;
            }
            const std::size_t count = std::min(bytes.size(), end_ - at_);
            std::copy_n(buffer_.data() + at_, count, bytes.data());
            at_ += count;
            bytes = bytes.subspan(count);
        }
        return true;
    }
    [[nodiscard]] bool read(std::uint8_t& byte) { return read({&byte, 1}); }

private:
    image_io& in_;
    std::vector<std::uint8_t> buffer_;
    std::size_t at_ = 0;
    std::size_t end_ = 0;
};

} // namespace klv::imaging
