#include "klv/core/library_strings.h"

namespace klv {

namespace {

// In Windows-1252, as all string resources.
constexpr string_resource strings[] = {
    {library_string::fatal_error,
        "Erreur irr\xE9"
        "cup\xE9rable"},
    {library_string::error, "Erreur"},
    {library_string::warning, "Avertissement"},
    {library_string::debugging,
        "D\xE9"
        "bogage"},
    {library_string::out_of_memory, "M\xE9moire insuffisante"},
    {library_string::nearly_out_of_memory,
        "la m\xE9moire est presque satur\xE9"
        "e"},
};

} // namespace

std::span<const string_resource> library_strings() noexcept { return strings; }

} // namespace klv
