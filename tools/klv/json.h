#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace klv::tool {

/// Builds one JSON text (RFC 8259) from the outside in. Strings are UTF-8; bytes that are not become U+FFFD.
class json_writer {
public:
    json_writer& begin_object() { return open('{'); }
    json_writer& end_object() { return close('}'); }
    json_writer& begin_array() { return open('['); }
    json_writer& end_array() { return close(']'); }
    json_writer& key(std::string_view name);
    json_writer& value(std::string_view text);
    json_writer& value(const char* text) { return value(std::string_view(text)); }
    json_writer& value(std::int64_t number);
    json_writer& value(double number);

    const std::string& text() const { return text_; }

private:
    json_writer& open(char bracket);
    json_writer& close(char bracket);
    void separate();
    void append_string(std::string_view text);

    std::string text_;
    std::vector<bool> has_items_{false};
    bool after_key_ = false;
};

/// The text with every byte sequence that is no UTF-8 replaced by U+FFFD.
std::string valid_utf8(std::string_view text);

} // namespace klv::tool
