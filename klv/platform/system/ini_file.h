#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace klv {

/// A plain text file of "[Section]" lines with "Key=Value" lines below. Names ignore letter case; blanks
/// around names and values are not part of them, unless a value stands in quotation marks. Comments and
/// whatever else stands in the file are kept when it is written. May throw std::bad_alloc.
class ini_file {
public:
    /// Reads path; a file that is not there is an empty one.
    explicit ini_file(std::string path);

    [[nodiscard]] bool has_section(std::string_view section) const;
    /// \return null when there is no such key
    [[nodiscard]] const std::string* find(std::string_view section, std::string_view key) const;
    /// The keys and values of a section in the order of the file.
    [[nodiscard]] std::vector<std::pair<std::string, std::string>> entries(std::string_view section) const;

    /// Sets a value in memory; save writes it.
    void set(std::string_view section, std::string_view key, std::string_view value);
    void remove(std::string_view section, std::string_view key);
    /// Replaces the file, all of it or nothing; makes its directory. \return false when that fails
    [[nodiscard]] bool save() const;

private:
    struct line {
        std::string text;
        std::string section; ///< the section it stands in; its own name for a section line
        std::string key; ///< empty for a line that is no entry
        std::string value;
        bool opens_section = false;
    };

    void add(std::string_view text, std::string& section);
    [[nodiscard]] std::size_t find_line(std::string_view section, std::string_view key) const;
    [[nodiscard]] std::size_t end_of_section(std::string_view section) const;

    std::string path_;
    std::vector<line> lines_;
};

[[nodiscard]] bool equal_names(std::string_view a, std::string_view b) noexcept;

} // namespace klv
