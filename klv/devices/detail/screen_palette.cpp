#include "klv/devices/detail/screen_palette.h"

#include "klv/gdi/gdi.h"
#include "klv/platform/system/registry.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace klv {
namespace {

constexpr int default_gamma_tenths = 14;
constexpr int least_gamma_tenths = 6;
constexpr int greatest_gamma_tenths = 22;

constexpr char gamma_key[] = "SOFTWARE\\ZYN\\System\\GammaCorrect";
constexpr char gamma_value[] = "Data";
constexpr char default_gamma_text[] = "1.4";

constexpr std::size_t static_count = 10; // at either end
constexpr std::size_t high_statics_first = screen_palette_size - static_count;
constexpr std::size_t low_greys_first = 12;
constexpr std::size_t high_greys_first = 236;
constexpr std::size_t cube_side = 6;

constexpr PALETTEENTRY entry(int red, int green, int blue)
{
    return {static_cast<BYTE>(red), static_cast<BYTE>(green), static_cast<BYTE>(blue), PC_NOCOLLAPSE};
}

constexpr std::array<PALETTEENTRY, static_count> standard_low{entry(0, 0, 0), entry(128, 0, 0),
    entry(0, 128, 0), entry(128, 128, 0), entry(0, 0, 128), entry(128, 0, 128), entry(0, 128, 128),
    entry(192, 192, 192), entry(127, 127, 127), entry(166, 202, 240)};
constexpr std::array<PALETTEENTRY, static_count> standard_high{entry(255, 251, 240), entry(160, 160, 164),
    entry(128, 128, 128), entry(255, 0, 0), entry(0, 255, 0), entry(255, 255, 0), entry(0, 0, 255),
    entry(255, 0, 255), entry(0, 255, 255), entry(255, 255, 255)};

using entries = std::array<PALETTEENTRY, screen_palette_size>;

bool take_system_colours(entries& to)
{
    const HDC dc = CreateICA("DISPLAY", nullptr, nullptr, nullptr);
    PALETTEENTRY* const high = to.data() + high_statics_first;
    const bool both = GetSystemPaletteEntries(dc, 0, static_count, to.data()) == static_count
        && GetSystemPaletteEntries(dc, high_statics_first, static_count, high) == static_count;
    DeleteDC(dc);
    return both;
}

void set_statics(entries& to)
{
    if (!take_system_colours(to)) {
        std::ranges::copy(standard_low, to.begin());
        std::ranges::copy(standard_high, to.begin() + high_statics_first);
    }
    for (std::size_t i = 0; i < static_count; ++i)
        to[i].peFlags = to[high_statics_first + i].peFlags = PC_NOCOLLAPSE;
}

void set_cube(entries& to, const gamma_levels& levels)
{
    std::size_t at = colour_cube_first;
    for (std::size_t red = 0; red < cube_side; ++red)
        for (std::size_t green = 0; green < cube_side; ++green)
            for (std::size_t blue = 0; blue < cube_side; ++blue)
                to[at++] = entry(levels[3 * red], levels[3 * green], levels[3 * blue]);
}

void set_greys(entries& to, const gamma_levels& levels)
{
    for (std::size_t i = 0; i < levels.size(); ++i) {
        const std::size_t at = i < 8 ? low_greys_first + i : high_greys_first + i - 8;
        to[at] = entry(levels[i], levels[i], levels[i]);
    }
    to[12] = entry(1, 1, 1);
    to[10] = entry(1, 0, 0);
    to[11] = entry(2, 0, 0);
    to[244] = entry(254, 254, 254);
    to[245] = entry(157, 233, 199);
}

// No entry may duplicate a static colour: the platform would map it there.
void move_off_statics(entries& to)
{
    const auto statics = std::span(to).subspan(high_statics_first);
    const auto lower = [](BYTE& component) { component = static_cast<BYTE>(component - (component != 0)); };
    for (std::size_t i = static_count; i < high_statics_first; ++i)
        if (std::ranges::find(statics, to[i]) != statics.end()) {
            lower(to[i].peRed);
            lower(to[i].peGreen);
            lower(to[i].peBlue);
        }
}

} // namespace

gamma_levels levels_for_gamma(int gamma_tenths)
{
    if (gamma_tenths < least_gamma_tenths || gamma_tenths > greatest_gamma_tenths)
        gamma_tenths = default_gamma_tenths;
    const double gamma = 2 * (gamma_tenths / 2) / 10.0;
    gamma_levels levels{};
    for (std::size_t i = 0; i < levels.size(); ++i)
        levels[i]
            = static_cast<std::uint8_t>(std::lround(255 * std::pow(static_cast<double>(i) / 15, 1 / gamma)));
    return levels;
}

int gamma_tenths_from_text(std::string_view text)
{
    const bool number = text.size() == 3 && text[0] >= '0' && text[0] <= '2' && text[1] == '.'
        && text[2] >= '0' && text[2] <= '9';
    const int tenths = number ? 10 * (text[0] - '0') + (text[2] - '0') : 0;
    return tenths >= least_gamma_tenths && tenths <= greatest_gamma_tenths ? tenths : default_gamma_tenths;
}

int gamma_tenths_from_registry() noexcept
{
    HKEY key = nullptr;
    DWORD disposition = 0;
    if (RegCreateKeyA(HKEY_LOCAL_MACHINE, gamma_key, &key, &disposition) != ERROR_SUCCESS)
        return default_gamma_tenths;
    int tenths = default_gamma_tenths;
    if (disposition == REG_CREATED_NEW_KEY) {
        RegSetValueExA(key, gamma_value, REG_SZ, reinterpret_cast<const BYTE*>(default_gamma_text),
            sizeof default_gamma_text);
    } else {
        char name[64]{};
        char value[16]{};
        DWORD name_size = sizeof name;
        DWORD value_size = sizeof value - 1;
        if (RegEnumValueA(key, 0, name, &name_size, nullptr, reinterpret_cast<BYTE*>(value), &value_size)
            == ERROR_SUCCESS)
            tenths = gamma_tenths_from_text(value);
    }
    RegCloseKey(key);
    return tenths;
}

palette_256 make_screen_palette(const gamma_levels& levels) noexcept
{
    palette_256 palette;
    set_statics(palette.entries);
    set_cube(palette.entries, levels);
    set_greys(palette.entries, levels);
    move_off_statics(palette.entries);
    return palette;
}

} // namespace klv
