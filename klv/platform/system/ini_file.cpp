#include "klv/platform/system/ini_file.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace klv {

namespace {

constexpr std::string_view blanks = " \t\r";

char lower(char c) noexcept { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

std::string_view trimmed(std::string_view text) noexcept
{
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

bool is_quoted(std::string_view text) noexcept
{
    return text.size() >= 2 && text.starts_with('"') && text.ends_with('"');
}

std::string_view unquoted(std::string_view text) noexcept
{
    return is_quoted(text) ? text.substr(1, text.size() - 2) : text;
}

std::string entry_text(std::string_view key, std::string_view value)
{
    const bool needs_quotes = trimmed(value) != value || is_quoted(value);
    std::string text(key);
    text += '=';
    if (needs_quotes)
        text += '"';
    text += value;
    if (needs_quotes)
        text += '"';
    return text;
}

} // namespace

bool equal_names(std::string_view a, std::string_view b) noexcept
{
    return std::ranges::equal(a, b, [](char x, char y) { return lower(x) == lower(y); });
}

ini_file::ini_file(std::string path)
    : path_(std::move(path))
{
    std::ifstream in(path_);
    std::string section;
    for (std::string text; std::getline(in, text);)
        add(text, section);
}

// Takes in one line of the file; section is the one that it stands in.
void ini_file::add(std::string_view text, std::string& section)
{
    line fresh;
    fresh.text = text;
    const std::string_view content = trimmed(text);
    const bool is_comment = content.starts_with(';') || content.starts_with('#');
    const std::size_t equals = content.find('=');
    if (content.starts_with('[') && content.ends_with(']')) {
        section = trimmed(content.substr(1, content.size() - 2));
        fresh.opens_section = true;
    } else if (!is_comment && equals != std::string_view::npos) {
        fresh.key = trimmed(content.substr(0, equals));
        fresh.value = unquoted(trimmed(content.substr(equals + 1)));
    }
    fresh.section = section;
    lines_.push_back(std::move(fresh));
}

bool ini_file::has_section(std::string_view section) const
{
    return std::ranges::any_of(
        lines_, [&](const line& l) { return l.opens_section && equal_names(l.section, section); });
}

std::size_t ini_file::find_line(std::string_view section, std::string_view key) const
{
    const auto found = std::ranges::find_if(lines_, [&](const line& l) {
        return !l.key.empty() && equal_names(l.section, section) && equal_names(l.key, key);
    });
    return static_cast<std::size_t>(found - lines_.begin());
}

const std::string* ini_file::find(std::string_view section, std::string_view key) const
{
    const std::size_t i = find_line(section, key);
    return i == lines_.size() ? nullptr : &lines_[i].value;
}

std::vector<std::pair<std::string, std::string>> ini_file::entries(std::string_view section) const
{
    std::vector<std::pair<std::string, std::string>> found;
    for (const line& l : lines_)
        if (!l.key.empty() && equal_names(l.section, section))
            found.emplace_back(l.key, l.value);
    return found;
}

// Where a new entry goes: behind the last line of the section that says something.
std::size_t ini_file::end_of_section(std::string_view section) const
{
    std::size_t end = lines_.size();
    for (std::size_t i = 0; i < lines_.size(); ++i)
        if (equal_names(lines_[i].section, section) && !trimmed(lines_[i].text).empty())
            end = i + 1;
    return end;
}

void ini_file::set(std::string_view section, std::string_view key, std::string_view value)
{
    if (!has_section(section))
        lines_.push_back({"[" + std::string(section) + "]", std::string(section), "", "", true});
    const line fresh{
        entry_text(key, value), std::string(section), std::string(key), std::string(value), false};
    const std::size_t i = find_line(section, key);
    if (i < lines_.size())
        lines_[i] = fresh;
    else
        lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(end_of_section(section)), fresh);
}

void ini_file::remove(std::string_view section, std::string_view key)
{
    std::erase_if(lines_, [&](const line& l) {
        return !l.key.empty() && equal_names(l.section, section) && equal_names(l.key, key);
    });
}

bool ini_file::save() const
{
    namespace fs = std::filesystem;
    std::error_code failed;
    fs::create_directories(fs::path(path_).parent_path(), failed);
    const std::string draft = path_ + ".new";
    std::ofstream out(draft, std::ios::trunc);
    for (const line& l : lines_)
        out << l.text << '\n';
    out.close();
    if (out)
        fs::rename(draft, path_, failed);
    const bool done = out && !failed;
    if (!done)
        fs::remove(draft, failed);
    return done;
}

} // namespace klv
