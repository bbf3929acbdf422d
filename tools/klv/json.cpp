#include "tools/klv/json.h"

#include <algorithm>
#include <cstdio>

namespace klv::tool {
namespace {

// Length of the well-formed UTF-8 sequence at the start of text (Unicode, table 3-7); 0 when there is none.
std::size_t sequence_length(std::string_view text)
{
    const auto byte = [&text](std::size_t i) {
        return i < text.size() ? static_cast<unsigned>(static_cast<unsigned char>(text[i])) : 0u;
    };
    const auto in = [](unsigned b, unsigned low, unsigned high) { return b >= low && b <= high; };
    const unsigned lead = byte(0);
    if (lead < 0x80)
        return 1;
    unsigned low = 0x80;
    unsigned high = 0xBF;
    std::size_t length = 0;
    if (in(lead, 0xC2, 0xDF))
        length = 2;
    else if (in(lead, 0xE0, 0xEF)) {
        length = 3;
        low = lead == 0xE0 ? 0xA0 : 0x80;
        high = lead == 0xED ? 0x9F : 0xBF;
    } else if (in(lead, 0xF0, 0xF4)) {
        length = 4;
        low = lead == 0xF0 ? 0x90 : 0x80;
        high = lead == 0xF4 ? 0x8F : 0xBF;
    }
    if (length == 0 || !in(byte(1), low, high))
        return 0;
    for (std::size_t i = 2; i < length; ++i)
        if (!in(byte(i), 0x80, 0xBF))
            return 0;
    return length;
}

} // namespace

std::string valid_utf8(std::string_view text)
{
    std::string out;
    while (!text.empty()) {
        const std::size_t length = sequence_length(text);
        out += length ? text.substr(0, length) : std::string_view("\xEF\xBF\xBD");
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return out;
}

void json_writer::separate()
{
    if (after_key_)
        after_key_ = false;
    else if (has_items_.back())
        text_ += ',';
    has_items_.back() = true;
}

json_writer& json_writer::open(char bracket)
{
    separate();
    text_ += bracket;
    has_items_.push_back(false);
    return *this;
}

json_writer& json_writer::close(char bracket)
{
    text_ += bracket;
    has_items_.pop_back();
    return *this;
}

json_writer& json_writer::key(std::string_view name)
{
    separate();
    append_string(name);
    text_ += ':';
    after_key_ = true;
    return *this;
}

json_writer& json_writer::value(std::string_view text)
{
    separate();
    append_string(text);
    return *this;
}

json_writer& json_writer::value(std::int64_t number)
{
    separate();
    text_ += std::to_string(number);
    return *this;
}

json_writer& json_writer::value(double number)
{
    separate();
    char digits[32];
    std::snprintf(digits, sizeof digits, "%.6g", number);
    text_ += digits;
    return *this;
}

void json_writer::append_string(std::string_view text)
{
    text_ += '"';
    for (const char c : valid_utf8(text)) {
        if (c == '"' || c == '\\') {
            text_ += '\\';
            text_ += c;
        } else if (static_cast<unsigned char>(c) < 0x20) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(c));
            text_ += escape;
        } else {
            text_ += c;
        }
    }
    text_ += '"';
}

} // namespace klv::tool
