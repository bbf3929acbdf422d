#include "klv/core/string.h"

#include "klv/core/resource_id.h"
#include "klv/core/system.h"
#include "klv/platform/system/string_resources.h"

#include <algorithm>
#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <utility>

namespace klv {

namespace {

constexpr int most_loaded_by_constructor = 255;
constexpr int most_loaded_by_assignment = 127;

bool is_lower(char c) noexcept { return c >= 'a' && c <= 'z'; }
bool is_upper(char c) noexcept { return c >= 'A' && c <= 'Z'; }
char to_upper(char c) noexcept { return is_lower(c) ? static_cast<char>(c - 'a' + 'A') : c; }
char to_lower(char c) noexcept { return is_upper(c) ? static_cast<char>(c - 'A' + 'a') : c; }

// What a number may stand behind: white space and a plus sign.
std::string_view number_text(std::string_view text) noexcept
{
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    const bool signed_plus = text.starts_with('+') && !text.substr(1).starts_with('-');
    if (signed_plus)
        text.remove_prefix(1);
    return text;
}

// from_chars also knows names such as "inf", which are no decimal numbers.
bool begins_decimal(std::string_view text) noexcept
{
    const std::size_t at = text.find_first_not_of("-.");
    return at != std::string_view::npos && vCHAR(text[at]).IsCharNumeric();
}

} // namespace

vSTRING::vSTRING(const char* text) noexcept { *this = text; }
vSTRING::vSTRING(std::string_view text) noexcept { Assign(text); }
vSTRING::vSTRING(const vSTRING& other) noexcept
    : vOBJECT(other)
{
    Assign(other.View());
}
vSTRING::vSTRING(const int& number) noexcept { *this = number; }
vSTRING::vSTRING(const vREAL& number) noexcept { *this = number; }
vSTRING::vSTRING(const vRESID& id) noexcept { load(id, most_loaded_by_constructor); }

vSTRING& vSTRING::operator=(const char* text) noexcept
{
    Assign(text ? std::string_view(text) : std::string_view());
    return *this;
}

vSTRING& vSTRING::operator=(const vSTRING& other) noexcept
{
    if (this != &other)
        Assign(other.View());
    return *this;
}

vSTRING& vSTRING::operator=(const int& number) noexcept { return FormatString("%d", number); }

vSTRING& vSTRING::operator=(const vREAL& number) noexcept
{
    // As "%.4g", but with a point in every locale.
    constexpr int significant_digits = 4;
    char* const text = vSYSTEM::GetLocalBuffer();
    const auto end = std::to_chars(
        text, text + vSYSTEM::buffer_size, number.Double(), std::chars_format::general, significant_digits);
    Assign(std::string_view(text, static_cast<std::size_t>(end.ptr - text)));
    return *this;
}

vSTRING& vSTRING::operator=(const vRESID& id) noexcept
{
    load(id, most_loaded_by_assignment);
    return *this;
}

vSTRING& vSTRING::operator=(const vCHAR& c) noexcept
{
    const char text[] = {c(), '\0'};
    return *this = text;
}

bool vSTRING::Assign(std::string_view text) noexcept
{
    text = text.substr(0, max_length);
    vBUFFER<char> fresh;
    const bool done
        = text.empty() || (fresh.reserve(text.size() + 1) && fresh.append(text) && fresh.push_back('\0'));
    if (!done)
        fresh.release();
    text_ = std::move(fresh);
    return done;
}

vSTRING& vSTRING::FormatString(const char* format, ...) noexcept
{
    if (!format)
        return *this = "";
    char* const text = vSYSTEM::GetLocalBuffer();
    std::va_list arguments;
    va_start(arguments, format);
    const int written = std::vsnprintf(text, vSYSTEM::buffer_size, format, arguments);
    va_end(arguments);
    return *this = written < 0 ? "" : text;
}

void vSTRING::load(const vRESID& id, int max_characters) noexcept
{
    char* const text = vSYSTEM::GetLocalBuffer();
    const int length = LoadStringA(id.Instance(), id(), text, max_characters + 1);
    Assign(std::string_view(text, static_cast<std::size_t>(std::max(length, 0))));
}

void vSTRING::Char(std::uint16_t i, const vCHAR& c) noexcept
{
    if (i >= Length())
        return;
    text_[i] = c();
    // A NUL put into the text ends it there.
    if (c() == '\0')
        text_.truncate(i + std::size_t{1});
}

std::uint16_t vSTRING::Count(const vCHAR& c) const noexcept
{
    const std::string_view text = View();
    return static_cast<std::uint16_t>(std::count(text.begin(), text.end(), c()));
}

std::uint16_t vSTRING::NoOfOccurance(const vSTRING& s) const noexcept
{
    if (s.Null())
        return 0;
    int count = 0;
    for (std::size_t at = View().find(s.View()); at != std::string_view::npos;
         at = View().find(s.View(), at + 1))
        ++count;
    return static_cast<std::uint16_t>(count);
}

int vSTRING::Int() const noexcept
{
    const std::string_view text = number_text(View());
    int number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec == std::errc::result_out_of_range)
        return text.starts_with('-') ? INT32_MIN : INT32_MAX;
    return number;
}

vREAL vSTRING::Real() const noexcept
{
    const std::string_view text = number_text(View());
    double number = 0;
    if (begins_decimal(text))
        std::from_chars(text.data(), text.data() + text.size(), number);
    return {number};
}

int vSTRING::Scan(const char*) const noexcept { return 1; }

vSTRING vSTRING::operator+(const vSTRING& tail) const noexcept
{
    vSTRING joined;
    const std::size_t length = std::min(std::size_t{Length()} + tail.Length(), max_length);
    vBUFFER<char>& out = joined.text_;
    if (length == 0)
        return joined;
    const bool done = out.reserve(length + 1) && out.append(View())
        && out.append(tail.View().substr(0, length - Length())) && out.push_back('\0');
    if (!done)
        out.release();
    return joined;
}

vSTRING vSTRING::operator+(const vCHAR& tail) const noexcept
{
    const char text[] = {tail(), '\0'};
    return *this + vSTRING(text);
}

vSTRING vSTRING::part(std::size_t from, std::size_t count) const noexcept
{
    const std::string_view text = View();
    return from >= text.size() ? vSTRING() : vSTRING(text.substr(from, count));
}

vSTRING vSTRING::GetSubString(const vSTRING& s) const noexcept { return part(View().find(s.View())); }

vSTRING vSTRING::GetSubString(std::uint16_t from, std::uint16_t to) const noexcept
{
    return from > to ? vSTRING() : part(from, static_cast<std::size_t>(to - from) + 1);
}

vSTRING vSTRING::GetPreDelimitedSubString(const vCHAR& c, std::uint16_t n) const noexcept
{
    if (n == 0)
        return {};
    std::size_t at = View().find(c());
    for (int i = 1; i < n && at != std::string_view::npos; ++i)
        at = View().find(c(), at + 1);
    return at == std::string_view::npos ? vSTRING() : part(0, at);
}

vSTRING vSTRING::GetDelimitedSubString(const vCHAR& c, std::uint16_t n) const noexcept
{
    std::string_view rest = View();
    for (int i = 0; i < n; ++i) {
        const std::size_t at = rest.find(c());
        if (at == std::string_view::npos)
            return {};
        rest.remove_prefix(at + 1);
    }
    return vSTRING(rest.substr(0, rest.find(c())).substr(0, vSYSTEM::buffer_size - 1));
}

vSTRING vSTRING::Word(std::uint16_t n) const noexcept
{
    std::string_view rest = View();
    for (int i = 0;; ++i) {
        rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
        const std::string_view word = rest.substr(0, rest.find(' '));
        if (i == n || word.empty())
            return vSTRING(word);
        rest.remove_prefix(word.size());
    }
}

vSTRING vSTRING::RemoveFromEnd(const vCHAR& c) noexcept
{
    const std::size_t at = View().rfind(c());
    if (at == std::string_view::npos)
        return *this;
    vSTRING tail = part(at + 1);
    *this = part(0, at);
    return tail;
}

void vSTRING::ConvertUpper() noexcept { std::transform(text_.begin(), text_.end(), text_.begin(), to_upper); }
void vSTRING::ConvertLower() noexcept { std::transform(text_.begin(), text_.end(), text_.begin(), to_lower); }

void vSTRING::Capitalise() noexcept
{
    char* const first = std::find_if(text_.begin(), text_.end(), is_lower);
    if (first == text_.end())
        return;
    *first = to_upper(*first);
    std::transform(first + 1, text_.end(), first + 1, to_lower);
}

void vSTRING::StripLTChar(const vCHAR& c) noexcept
{
    if (Null() || c() == '\0')
        return;
    char* const end = std::remove(text_.begin(), text_.end(), c());
    text_.truncate(static_cast<std::size_t>(end - text_.begin()));
}

vSTRING& vSTRING::RemoveLeadAndTrailing(const vCHAR& c) noexcept
{
    const std::size_t first = View().find_first_not_of(c());
    if (first == std::string_view::npos)
        return *this = "";
    const std::size_t last = View().find_last_not_of(c());
    return *this = part(first, last - first + 1);
}

} // namespace klv
