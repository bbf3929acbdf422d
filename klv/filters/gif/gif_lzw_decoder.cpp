#include "klv/filters/gif/gif_lzw_decoder.h"

#include "klv/streams/stream.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace klv {

// ---- Code reader

std::uint64_t gif_code_reader::load(const std::uint8_t* bytes)
{
    if constexpr (std::endian::native == std::endian::little) {
        std::uint64_t value;
        std::memcpy(&value, bytes, sizeof value);
        return value;
    }
    std::uint64_t value = 0;
    for (unsigned i = 0; i < sizeof value; ++i)
        value |= std::uint64_t{bytes[i]} << (8 * i);
    return value;
}

void gif_code_reader::start()
{
    if (stream_.ReadPlain(&next_length_, 1) != 1)
        next_length_ = 0;
}

void gif_code_reader::join_sub_blocks()
{
    end_ = static_cast<std::size_t>(std::copy(bytes_.begin() + static_cast<std::ptrdiff_t>(at_),
                                        bytes_.begin() + static_cast<std::ptrdiff_t>(end_), bytes_.begin())
        - bytes_.begin());
    at_ = 0;
    // Each sub-block is read with the length byte of the next.
    while (next_length_ != 0 && bytes_.size() - end_ > next_length_) {
        const std::uint32_t wanted = next_length_ + 1U;
        const std::uint32_t got = stream_.ReadPlain(bytes_.data() + end_, wanted);
        end_ += std::min<std::uint32_t>(got, next_length_);
        next_length_ = got == wanted ? bytes_[end_] : std::uint8_t{0};
    }
}

gif_code_reader::bit_buffer gif_code_reader::filled_from_last_bytes(bit_buffer bits)
{
    for (; bits.count <= 56 && at_ < end_; bits.count += 8)
        bits.value |= std::uint64_t{bytes_[at_++]} << bits.count;
    return bits;
}

// ---- Decoder

namespace {

/// Copies length bytes that lie before `to`, in steps that may write past the end. The source may overlap the
/// target when it is as long as their distance or longer by one; that last byte is the caller's care.
inline void copy_string(const std::uint8_t* from, std::uint8_t* to, std::uint32_t length)
{
    struct step {
        std::array<std::uint8_t, 16> bytes;
    } held;
    std::memcpy(&held, from, sizeof held);
    std::memcpy(to, &held, sizeof held);
    for (std::uint32_t done = sizeof held; done < length; done += sizeof held) {
        std::memcpy(&held, from + done, sizeof held);
        std::memcpy(to + done, &held, sizeof held);
    }
}

} // namespace

bool gif_lzw_decoder::make_room(std::uint16_t width, std::uint16_t height) noexcept
{
    width_ = width;
    rows_left_ = height;
    // The output between two moves is as long as the history.
    const std::uint64_t needed = std::min<std::uint64_t>(std::uint64_t{width} * height, 2 * history);
    return window_.resize_uninitialized(static_cast<std::size_t>(window_start + needed + window_reserve))
        && table_.resize(gif_code_count);
}

void gif_lzw_decoder::begin_table(const gif_code_layout& layout)
{
    for (std::uint32_t literal = 0; literal < layout.clear(); ++literal)
        table_[literal] = {literal % gif_most_literals, 1, 0};
    table_[layout.clear()] = {};
    table_[layout.end()] = {};
    first_free_ = layout.first_free();
}

std::uint32_t gif_lzw_decoder::next_stop() const
{
    return std::min(row_start_ + width_, static_cast<std::uint32_t>(window_.size()) - window_reserve);
}

oFILTER_STATUS gif_lzw_decoder::hand_on(gif_row_sink& sink)
{
    while (rows_left_ != 0 && end_ - row_start_ >= width_) {
        const oFILTER_STATUS taken = sink.take_row(window_.span().subspan(row_start_, width_));
        if (taken != oFILTER_OK)
            return taken;
        row_start_ += width_;
        --rows_left_;
    }
    if (rows_left_ != 0 && end_ + window_reserve >= window_.size())
        move_window();
    return oFILTER_OK;
}

oFILTER_STATUS gif_lzw_decoder::hand_on_rest(gif_row_sink& sink)
{
    const oFILTER_STATUS handed_on = hand_on(sink);
    if (handed_on != oFILTER_OK || rows_left_ == 0 || end_ == row_start_)
        return handed_on;
    return sink.take_row(window_.span().subspan(row_start_, end_ - row_start_));
}

void gif_lzw_decoder::move_window()
{
    const std::uint32_t kept_from = std::min(row_start_, end_ - history);
    const std::uint32_t distance = kept_from - window_start;
    for (std::uint32_t code = first_free_; code < count_; ++code) {
        entry& string = table_[code];
        if (string.place == moved_out)
            continue;
        if (string.place >= kept_from) {
            string.place -= distance;
        } else {
            last_pixels_[code] = window_[string.place + string.length - 1];
            string.place = moved_out;
        }
    }
    std::memmove(window_.data() + window_start, window_.data() + kept_from, end_ - kept_from);
    end_ -= distance;
    row_start_ -= distance;
}

void gif_lzw_decoder::write_moved_out(std::uint32_t code)
{
    std::uint8_t* const to = window_.data() + end_;
    std::uint32_t length = table_[code].length;
    std::uint32_t part = code;
    do {
        to[--length] = last_pixels_[part];
        part = table_[part].prefix;
    } while (table_[part].place == moved_out);
    std::memcpy(to, window_.data() + table_[part].place, length);
    table_[code].place = end_;
}

oFILTER_STATUS gif_lzw_decoder::decode(vSTREAM& in, unsigned literal_bits, gif_row_sink& sink)
{
    const gif_code_layout layout{literal_bits};
    begin_table(layout);
    std::uint8_t* const window = window_.data();
    for (std::uint32_t literal = 0; literal < gif_most_literals; ++literal)
        window[literal] = static_cast<std::uint8_t>(literal);
    row_start_ = end_ = window_start;

    gif_code_reader codes(in);
    codes.start();
    gif_code_reader::bit_buffer bits;
    unsigned code_bits = layout.first_code_bits();
    entry* const table = table_.data();
    std::uint32_t count = layout.first_free();
    std::uint32_t end = end_;
    std::uint32_t stop = next_stop();
    for (;;) {
        if (bits.count < gif_most_code_bits) {
            codes.fill(bits);
            if (bits.count < code_bits)
                break;
        }
        const auto code = static_cast<std::uint32_t>(bits.value & ((1U << code_bits) - 1));
        bits.value >>= code_bits;
        bits.count -= code_bits;

        if (code >= count) [[unlikely]]
            break;
        const entry string = table[code];
        if (string.length == 0) [[unlikely]] {
            end_ = end;
            if (code == layout.end())
                return hand_on_rest(sink);
            count = layout.first_free();
            code_bits = layout.first_code_bits();
            continue;
        }
        if (string.place != moved_out) [[likely]] {
            copy_string(window + string.place, window + end, string.length);
            // The newest string ends with the pixel that this very copy wrote first.
            if (string.place + string.length > end)
                window[end + string.length - 1] = window[end];
        } else {
            end_ = end;
            write_moved_out(code);
        }
        // The next code may already use this string with one more pixel, the first that will follow it.
        if (count < gif_code_count) {
            table[count]
                = {end, static_cast<std::uint16_t>(string.length + 1U), static_cast<std::uint16_t>(code)};
            ++count;
            if (count > 1U << code_bits && code_bits < gif_most_code_bits)
                ++code_bits;
        }
        end += string.length;
        if (end >= stop) {
            end_ = end;
            count_ = count;
            const oFILTER_STATUS handed_on = hand_on(sink);
            if (handed_on != oFILTER_OK || rows_left_ == 0)
                return handed_on;
            end = end_;
            stop = next_stop();
        }
    }
    end_ = end;
    const oFILTER_STATUS handed_on = hand_on_rest(sink);
    return handed_on == oFILTER_OK ? oFILTER_BAD_DATA : handed_on;
}

} // namespace klv
