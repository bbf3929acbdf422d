#include "klv/gdi/text/font_names.h"

#include <algorithm>

namespace klv::gdi {
namespace {

struct substitute {
    std::string_view face; // lower case
    std::string_view family;
};
constexpr substitute substitutes[] = {
    {"helv", "Arial"},
    {"helvetica", "Arial"},
    {"ms sans serif", "Arial"},
    {"ms shell dlg", "Arial"},
    {"ms shell dlg 2", "Arial"},
    {"microsoft sans serif", "Arial"},
    {"small fonts", "Arial"},
    {"swiss", "Arial"},
    {"system", "Arial"},
    {"modern", "Arial"},
    {"tms rmn", "Times New Roman"},
    {"times", "Times New Roman"},
    {"timesnewroman", "Times New Roman"},
    {"ms serif", "Times New Roman"},
    {"roman", "Times New Roman"},
    {"dutch", "Times New Roman"},
    {"courier", "Courier New"},
    {"fixedsys", "Courier New"},
    {"terminal", "Courier New"},
    {"script", "Z003"},
    {"symbol set swa", "Symbol"},
    {"itc zapf dingbats", "Dingbats"},
    {"zapf dingbats", "Dingbats"},
    {"zapfdingbats", "Dingbats"},
    {"monotype sorts", "Dingbats"},
};

struct similar {
    std::string_view face; // lower case
    const char* family;
};
constexpr similar similar_families[] = {
    {"verdana", "DejaVu Sans"},
    {"ms reference sans serif", "DejaVu Sans"},
    {"lucida sans unicode", "DejaVu Sans"},
    {"lucida console", "DejaVu Sans Mono"},
    {"tahoma", "Arial"},
    {"arial unicode ms", "Arial"},
    {"georgia", "Times New Roman"},
};

bool same_ignoring_case(std::string_view name, std::string_view lower_case)
{
    return std::ranges::equal(name, lower_case, {},
        [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; });
}

} // namespace

std::string_view outline_family(std::string_view face)
{
    for (const auto& entry : substitutes)
        if (same_ignoring_case(face, entry.face))
            return entry.family;
    return face;
}

const char* similar_family(std::string_view face)
{
    for (const auto& entry : similar_families)
        if (same_ignoring_case(face, entry.face))
            return entry.family;
    return nullptr;
}

} // namespace klv::gdi
