#pragma once

#include "klv/formats/wmf_records.h"

#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <vector>

namespace klv::test {

/// Builds Windows metafiles in memory, record by record. Words are 16-bit parameters in file order.
class wmf_builder {
public:
    using words = std::vector<int>;

    wmf_builder& placeable(int left, int top, int right, int bottom, int units_per_inch)
    {
        header_ = {};
        put32(header_, wmf_placeable_key);
        for (const int w : {0, left, top, right, bottom, units_per_inch, 0, 0})
            put16(header_, w);
        int checksum = 0;
        for (std::size_t i = 0; i < header_.size(); i += 2)
            checksum ^= header_[i] | header_[i + 1] << 8;
        put16(header_, checksum);
        return *this;
    }
    wmf_builder& add(wmf_function function, const words& parameters = {})
    {
        return add_bytes(function, bytes_of(parameters));
    }
    wmf_builder& add_bytes(wmf_function function, std::vector<std::uint8_t> parameters)
    {
        if (parameters.size() % 2)
            parameters.push_back(0);
        const auto size = static_cast<std::uint32_t>(parameters.size() / 2 + 3);
        largest_ = std::max(largest_, size);
        put32(records_, size);
        put16(records_, static_cast<int>(function));
        records_.insert(records_.end(), parameters.begin(), parameters.end());
        return *this;
    }
    /// Raw bytes where a record is expected.
    wmf_builder& raw(std::initializer_list<int> bytes)
    {
        for (const int b : bytes)
            records_.push_back(static_cast<std::uint8_t>(b));
        return *this;
    }

    wmf_builder& window(int x, int y, int width, int height)
    {
        return add(wmf_function::set_window_org, {y, x}).add(wmf_function::set_window_ext, {height, width});
    }
    wmf_builder& pen(int style, int width, std::uint32_t colour)
    {
        return add(wmf_function::create_pen_indirect, {style, width, 0, low(colour), high(colour)});
    }
    wmf_builder& brush(int style, std::uint32_t colour, int hatch = 0)
    {
        return add(wmf_function::create_brush_indirect, {style, low(colour), high(colour), hatch});
    }
    wmf_builder& font(int height, std::string_view face, int escapement = 0, int weight = 400, int italic = 0)
    {
        auto bytes = bytes_of({height, 0, escapement, 0, weight, italic, 0, 0, 0});
        bytes.insert(bytes.end(), face.begin(), face.end());
        bytes.resize(18 + 32);
        return add_bytes(wmf_function::create_font_indirect, bytes);
    }
    wmf_builder& select(int object) { return add(wmf_function::select_object, {object}); }
    wmf_builder& rectangle(int left, int top, int right, int bottom)
    {
        return add(wmf_function::rectangle, {bottom, right, top, left});
    }
    wmf_builder& text_out(std::string_view text, int x, int y)
    {
        auto bytes = bytes_of({static_cast<int>(text.size())});
        bytes.insert(bytes.end(), text.begin(), text.end());
        bytes.resize(bytes.size() + text.size() % 2);
        put16(bytes, y);
        put16(bytes, x);
        return add_bytes(wmf_function::text_out, bytes);
    }
    wmf_builder& comment(std::vector<std::uint8_t> bytes)
    {
        auto record = bytes_of({wmf_comment_escape, static_cast<int>(bytes.size())});
        record.insert(record.end(), bytes.begin(), bytes.end());
        return add_bytes(wmf_function::escape, record);
    }

    std::vector<std::uint8_t> build(bool end_record = true)
    {
        if (end_record)
            add(wmf_function::end_of_file);
        std::vector<std::uint8_t> file = header_;
        for (const int w : {1, 9, 0x300})
            put16(file, w);
        put32(file, static_cast<std::uint32_t>(9 + records_.size() / 2));
        put16(file, 20);
        put32(file, announced_largest ? announced_largest : largest_);
        put16(file, 0);
        file.insert(file.end(), records_.begin(), records_.end());
        return file;
    }

    std::uint32_t announced_largest = 0; ///< what the header says instead of the truth, when not 0

    static void put16(std::vector<std::uint8_t>& out, int value)
    {
        out.push_back(static_cast<std::uint8_t>(value & 0xFF));
        out.push_back(static_cast<std::uint8_t>(value >> 8 & 0xFF));
    }
    static void put32(std::vector<std::uint8_t>& out, std::uint32_t value)
    {
        put16(out, low(value));
        put16(out, high(value));
    }
    static std::vector<std::uint8_t> bytes_of(const words& values)
    {
        std::vector<std::uint8_t> out;
        for (const int w : values)
            put16(out, w);
        return out;
    }
    static int low(std::uint32_t v) { return static_cast<int>(v & 0xFFFF); }
    static int high(std::uint32_t v) { return static_cast<int>(v >> 16); }

private:
    std::vector<std::uint8_t> header_;
    std::vector<std::uint8_t> records_;
    std::uint32_t largest_ = 3;
};

} // namespace klv::test
