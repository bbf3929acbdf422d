#include "klv/colour/pantone/pantone_library.h"

#include "klv/platform/module_table.h"

namespace klv {

namespace {

using encoded_colour = std::array<std::uint8_t, 8>;
using encode_function
    = std::uint16_t (*)(std::uint16_t marker, std::uint16_t simtype, std::uint16_t index, void* encoded);
using rgb_function = std::uint16_t (*)(const void* encoded, std::uint16_t* rgb, std::uint16_t one);
using cmyk_function = std::uint16_t (*)(const void* encoded, std::uint16_t* cmyk);

constexpr std::uint16_t failed = 2;

class colour_library {
public:
    colour_library() noexcept
        : module_(LoadLibraryA("POCE2.DLL"))
    {
    }
    colour_library(const colour_library&) = delete;
    colour_library& operator=(const colour_library&) = delete;
    ~colour_library()
    {
        if (module_ != nullptr)
            FreeLibrary(module_);
    }

    template <typename FUNCTION> [[nodiscard]] FUNCTION find(const char* name) const noexcept
    {
        return module_ == nullptr ? nullptr : reinterpret_cast<FUNCTION>(GetProcAddress(module_, name));
    }

    [[nodiscard]] std::optional<encoded_colour> encode(const pantone_reference& colour) const noexcept
    {
        encoded_colour encoded{};
        const auto function = find<encode_function>("_POCE_EncodeColor@16");
        if (function == nullptr
            || function(colour.marker, colour.simtype, colour.index, encoded.data()) == failed)
            return std::nullopt;
        return encoded;
    }

private:
    HINSTANCE module_;
};

} // namespace

std::optional<std::array<std::uint16_t, 3>> pantone_rgb(const pantone_reference& colour) noexcept
{
    const colour_library library;
    const auto encoded = library.encode(colour);
    const auto function = library.find<rgb_function>("_POCE_GetColorRGB@12");
    std::array<std::uint16_t, 3> rgb{};
    if (!encoded || function == nullptr || function(encoded->data(), rgb.data(), 1) == failed)
        return std::nullopt;
    return rgb;
}

std::optional<std::array<std::uint16_t, 4>> pantone_cmyk(const pantone_reference& colour) noexcept
{
    const colour_library library;
    const auto encoded = library.encode(colour);
    const auto function = library.find<cmyk_function>("_POCE_GetColorCMYK@12");
    std::array<std::uint16_t, 4> cmyk{};
    if (!encoded || function == nullptr || function(encoded->data(), cmyk.data()) == failed)
        return std::nullopt;
    return cmyk;
}

} // namespace klv
