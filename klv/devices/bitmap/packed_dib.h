#pragma once

#include "klv/base/buffer.h"
#include "klv/base/types.h"

#include <cstddef>
#include <cstdint>

namespace klv {

class oDIB;

/// A bitmap as the platform takes it: info header, colour table and bottom-up lines in one block.
class packed_dib {
public:
    /// Empty when the bitmap has no pixels or memory is out.
    explicit packed_dib(const oDIB& bitmap) noexcept;

    bool empty() const noexcept { return block_.empty(); }
    const BITMAPINFO* info() const noexcept { return reinterpret_cast<const BITMAPINFO*>(block_.data()); }
    const std::uint8_t* bits() const noexcept { return block_.data() + bits_at_; }

private:
    vBUFFER<std::uint8_t> block_;
    std::size_t bits_at_ = 0;
};

} // namespace klv
