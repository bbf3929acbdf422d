#pragma once

#include "klv/base/buffer.h"
#include "klv/filters/filter.h"
#include "klv/filters/gif/gif_lzw.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace klv {

class vSTREAM;

/// Takes the rows of an image in the order of their coding.
class gif_row_sink {
public:
    virtual ~gif_row_sink() = default;
    /// One index a byte. A row that was cut off is shorter than the others, and the last one.
    /// Anything but oFILTER_OK ends the decoding with that status.
    virtual oFILTER_STATUS take_row(std::span<const std::uint8_t> indices) = 0;
};

/// The code stream of a GIF image as a row of bits, least significant first. Its sub-blocks are joined as
/// they are read.
class gif_code_reader {
public:
    explicit gif_code_reader(vSTREAM& stream)
        : stream_(stream)
    {
    }

    /// Bits that were taken out of the stream, the next code lowest.
    struct bit_buffer {
        std::uint64_t value = 0;
        unsigned count = 0;
    };

    /// Reads the length of the first sub-block.
    void start();
    /// Fills the buffer to at least 56 bits, or with everything that is left.
    void fill(bit_buffer& bits)
    {
        if (end_ - at_ < sizeof(std::uint64_t)) [[unlikely]]
            join_sub_blocks();
        if (end_ - at_ >= sizeof(std::uint64_t)) [[likely]] {
            bits.value |= load(bytes_.data() + at_) << bits.count;
            at_ += (63 - bits.count) / 8;
            bits.count |= 56;
        } else {
            bits = filled_from_last_bytes(bits);
        }
    }

private:
    static std::uint64_t load(const std::uint8_t* bytes);
    void join_sub_blocks();
    [[nodiscard]] bit_buffer filled_from_last_bytes(bit_buffer bits);

    vSTREAM& stream_;
    std::array<std::uint8_t, 4096> bytes_{};
    std::size_t at_ = 0;
    std::size_t end_ = 0;
    std::uint8_t next_length_ = 0; ///< of the sub-block to come; 0 when there is none
};

/// Decodes the code stream of one image.
///
/// The string of a code always stands in what was written before: it is the string of the code before, and
/// the first pixel of what followed. So a table entry is the place and the length of that earlier output, and
/// a code costs one copy. Output is kept in a window. When it moves on, the entries that point behind it
/// are turned into the usual chain (prefix code and last pixel); the next use of such an entry writes its
/// string anew and lets the entry point there.
class gif_lzw_decoder {
public:
    static constexpr unsigned least_literal_bits = 1;
    /// The format says 8; some files say more and mean the lower 8 bits of each code.
    static constexpr unsigned most_literal_bits = gif_most_code_bits - 1;

    /// \return false when memory is out
    [[nodiscard]] bool make_room(std::uint16_t width, std::uint16_t height) noexcept;

    /// Decodes the image of that size after its minimum code size, which lies between the limits above.
    /// oFILTER_BAD_DATA when the codes are damaged or end early; the sink has what came before. An end
    /// code ends the image early without being a fault.
    oFILTER_STATUS decode(vSTREAM& in, unsigned literal_bits, gif_row_sink& sink);

private:
    struct entry {
        std::uint32_t place = 0; ///< in the window, or moved_out
        std::uint16_t length = 0; ///< 0 for the clear and the end code
        std::uint16_t prefix = 0; ///< code of the string without its last pixel
    };
    static constexpr std::uint32_t moved_out = 0xFFFFFFFF;
    static constexpr std::uint32_t most_string_length = gif_code_count;
    /// Copies go in steps of this many bytes and may write so many past the end.
    static constexpr std::uint32_t copy_step = 16;
    /// More than a row and the longest string.
    static constexpr std::uint32_t history = 1U << 17;
    /// The window begins with every literal, so that literals are entries like all others.
    static constexpr std::uint32_t window_start = gif_most_literals;
    static constexpr std::uint32_t window_reserve = most_string_length + copy_step;

    void begin_table(const gif_code_layout& layout);
    /// Writes a string that is not in the window any more at the end of the output.
    void write_moved_out(std::uint32_t code);
    /// Hands on the rows that are complete, and makes room for more output.
    oFILTER_STATUS hand_on(gif_row_sink& sink);
    /// The end of the output is told, with the rows that are complete and a last one that is not.
    oFILTER_STATUS hand_on_rest(gif_row_sink& sink);
    void move_window();
    /// Where the output has to stop for hand_on.
    [[nodiscard]] std::uint32_t next_stop() const;

    vBUFFER<std::uint8_t> window_;
    vBUFFER<entry> table_;
    std::array<std::uint8_t, gif_code_count> last_pixels_{}; ///< of entries that were moved out
    std::uint32_t first_free_ = 0;
    std::uint32_t count_ = 0; ///< codes in the table
    std::uint32_t end_ = 0; ///< of the output, in the window
    std::uint32_t row_start_ = 0; ///< in the window
    std::uint32_t width_ = 0;
    std::uint32_t rows_left_ = 0;
};

} // namespace klv
