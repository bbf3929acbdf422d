#include "klv/gdi/text/font_charset.h"

#include "klv/gdi/text.h"
#include "klv/gdi/text/symbol_tables.h"

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>

#include <iconv.h>

namespace klv::gdi {
namespace {

constexpr const char* ansi_code_page = "CP1252";

struct charset_entry {
    std::uint8_t charset;
    const char* code_page; // as iconv calls it
    std::string_view face_suffix;
};
// The suffixes are those under which the platform installs substitute names of its faces; the East Asian,
// OEM and symbol sets have none there and get their own.
constexpr charset_entry charsets[] = {
    {EASTEUROPE_CHARSET, "CP1250", " CE"},
    {RUSSIAN_CHARSET, "CP1251", " CYR"},
    {GREEK_CHARSET, "CP1253", " Greek"},
    {TURKISH_CHARSET, "CP1254", " TUR"},
    {HEBREW_CHARSET, "CP1255", " (Hebrew)"},
    {ARABIC_CHARSET, "CP1256", " (Arabic)"},
    {BALTIC_CHARSET, "CP1257", " Baltic"},
    {VIETNAMESE_CHARSET, "CP1258", " (Vietnamese)"},
    {THAI_CHARSET, "CP874", " (Thai)"},
    {SHIFTJIS_CHARSET, "CP932", " (Japanese)"},
    {HANGUL_CHARSET, "CP949", " (Hangul)"},
    {JOHAB_CHARSET, "CP1361", " (Johab)"},
    {GB2312_CHARSET, "CP936", " (GB2312)"},
    {CHINESEBIG5_CHARSET, "CP950", " (Big5)"},
    {MAC_CHARSET, "MACINTOSH", " (Mac)"},
    {OEM_CHARSET, "CP437", " (OEM)"},
    {SYMBOL_CHARSET, ansi_code_page, " (Symbol)"},
};

struct face_charset {
    std::string_view face;
    std::uint8_t charset;
};
// Faces that are made for one script, so that older files name them without a character set.
constexpr face_charset faces_of_one_script[] = {
    {"MS Mincho", SHIFTJIS_CHARSET},
    {"MS PMincho", SHIFTJIS_CHARSET},
    {"MS Gothic", SHIFTJIS_CHARSET},
    {"MS PGothic", SHIFTJIS_CHARSET},
    {"SimSun", GB2312_CHARSET},
    {"NSimSun", GB2312_CHARSET},
    {"SimHei", GB2312_CHARSET},
    {"MingLiU", CHINESEBIG5_CHARSET},
    {"PMingLiU", CHINESEBIG5_CHARSET},
    {"Batang", HANGUL_CHARSET},
    {"Gulim", HANGUL_CHARSET},
    {"Dotum", HANGUL_CHARSET},
};

// 0x80 to 0x9F of Windows code page 1252; the bytes it leaves open stand for themselves.
constexpr std::array<char32_t, 32> cp1252_middle{0x20AC, 0x81, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x8D, 0x017D, 0x8F, 0x90, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D, 0x017E, 0x0178};

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

bool equal_ignoring_case(std::string_view a, std::string_view b)
{
    return std::ranges::equal(a, b, {}, lower, lower);
}

bool ends_with_ignoring_case(std::string_view text, std::string_view end)
{
    return text.size() > end.size() && equal_ignoring_case(text.substr(text.size() - end.size()), end);
}

// One character through iconv; 0 when the bytes are none in that code page.
char32_t convert(iconv_t converter, std::string_view bytes)
{
    char in[2]{};
    std::ranges::copy(bytes, in);
    char* from = in;
    std::size_t from_left = bytes.size();
    char32_t character = 0;
    char* to = reinterpret_cast<char*>(&character);
    std::size_t to_left = sizeof character;
    iconv(converter, nullptr, nullptr, nullptr, nullptr);
    if (iconv(converter, &from, &from_left, &to, &to_left) == static_cast<std::size_t>(-1))
        return 0;
    iconv(converter, nullptr, nullptr, &to, &to_left); // a character may wait for a combining mark
    return from_left == 0 && to_left == 0 ? character : 0;
}

class converter {
public:
    explicit converter(const char* code_page)
        : handle_(iconv_open("UTF-32LE", code_page))
    {
    }
    ~converter()
    {
        if (usable())
            iconv_close(handle_);
    }
    converter(const converter&) = delete;
    converter& operator=(const converter&) = delete;

    [[nodiscard]] bool usable() const { return handle_ != reinterpret_cast<iconv_t>(-1); }
    [[nodiscard]] char32_t character(std::string_view bytes) const
    {
        return usable() ? convert(handle_, bytes) : 0;
    }

private:
    iconv_t handle_;
};

} // namespace

code_page::code_page(const char* name)
    : name_(name)
{
    for (unsigned byte = 0; byte < 256; ++byte)
        single_[byte] = byte;
    std::ranges::copy(cp1252_middle, single_.begin() + 0x80);
    if (name == ansi_code_page)
        return;
    const converter from(name);
    if (!from.usable())
        return;
    for (unsigned byte = 0x80; byte < 256; ++byte) {
        const char c = static_cast<char>(static_cast<std::uint8_t>(byte));
        single_[byte] = from.character({&c, 1});
    }
}

const code_page& code_page::of_charset(std::uint8_t charset)
{
    static std::mutex mutex;
    static std::map<const char*, std::unique_ptr<code_page>> made;
    const auto* entry = std::ranges::find(charsets, charset, &charset_entry::charset);
    const char* name = entry != std::end(charsets) ? entry->code_page : ansi_code_page;
    const std::lock_guard lock(mutex);
    auto& page = made[name];
    if (!page)
        page.reset(new code_page(name));
    return *page;
}

text_character code_page::next(std::string_view text) const
{
    const auto lead = static_cast<std::uint8_t>(text[0]);
    if (single_[lead] != 0 || lead < 0x80 || text.size() < 2)
        return {single_[lead], lead, 1};
    const auto trail = static_cast<std::uint8_t>(text[1]);
    const char32_t both = pair(lead, trail);
    if (both == 0)
        return {0, lead, 1};
    return {both, static_cast<std::uint16_t>(lead << 8 | trail), 2};
}

std::string code_page::utf8(std::string_view text) const
{
    std::string out;
    const auto add = [&](char32_t bits) { out += static_cast<char>(static_cast<std::uint8_t>(bits)); };
    const auto add_trail = [&](char32_t bits) { add(0x80 | (bits & 0x3F)); };
    while (!text.empty()) {
        const text_character c = next(text);
        text.remove_prefix(c.bytes);
        if (c.unicode < 0x80) {
            add(c.unicode);
        } else if (c.unicode < 0x800) {
            add(0xC0 | c.unicode >> 6);
            add_trail(c.unicode);
        } else if (c.unicode < 0x10000) {
            add(0xE0 | c.unicode >> 12);
            add_trail(c.unicode >> 6);
            add_trail(c.unicode);
        }
    }
    return out;
}

char32_t code_page::pair(std::uint8_t lead, std::uint8_t trail) const
{
    if (name_ == ansi_code_page)
        return 0;
    // A converter has a state of its own, so each thread has its own.
    static thread_local std::map<const char*, converter> converters;
    const char bytes[] = {static_cast<char>(lead), static_cast<char>(trail)};
    return converters.try_emplace(name_, name_).first->second.character({bytes, 2});
}

face_and_charset split_face_name(std::string_view name, std::uint8_t charset)
{
    if (name.starts_with('@')) // the face turned for vertical writing
        name.remove_prefix(1);
    const bool open = charset == ANSI_CHARSET || charset == DEFAULT_CHARSET;
    for (const auto& entry : charsets)
        if (ends_with_ignoring_case(name, entry.face_suffix)) {
            name.remove_suffix(entry.face_suffix.size());
            return {std::string(name), open ? entry.charset : charset};
        }
    if (open)
        for (const auto& entry : faces_of_one_script)
            if (equal_ignoring_case(name, entry.face))
                charset = entry.charset;
    return {std::string(name), charset};
}

} // namespace klv::gdi

namespace klv {

std::string face_name_with_charset(std::string_view face, std::uint8_t charset)
{
    std::string name(face);
    const auto* entry = std::ranges::find(gdi::charsets, charset, &gdi::charset_entry::charset);
    if (entry != std::end(gdi::charsets) && !gdi::symbol_set_of_face(face))
        name += entry->face_suffix;
    return name;
}

} // namespace klv
