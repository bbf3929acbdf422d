#pragma once

#include "klv/imaging/codec.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace klv::imaging {

/// A picture that a file holds column by column: stored lines are gathered whole and delivered turned.
class sideways_picture {
public:
    /// shown: the bitmap as it is delivered. Stored lines are its columns, from the right one on or from the
    /// left, and have their pixels from the bottom up or from the top down.
    sideways_picture(const bitmap_handle& shown, bool from_the_right, bool bottom_up);

    /// Room for the next stored line; null after the last. Lines that never come stay 0.
    [[nodiscard]] std::uint8_t* next_line();
    [[nodiscard]] bool empty() const { return gathered_ == 0; }
    /// As a line_sink has it: what is gathered is there.
    [[nodiscard]] bool finish() const { return true; }
    /// False when the sink's callback has stopped the load.
    [[nodiscard]] bool deliver(line_sink& sink) const;

private:
    [[nodiscard]] const std::uint8_t* column(std::size_t x) const;

    std::size_t width_; ///< shown
    std::size_t height_;
    std::int32_t bits_;
    bool from_the_right_;
    bool bottom_up_;
    std::size_t stored_bytes_; ///< of a stored line
    std::size_t gathered_ = 0;
    std::vector<std::uint8_t> stored_;
};

} // namespace klv::imaging
