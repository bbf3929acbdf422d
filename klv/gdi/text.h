#pragma once

#include "klv/base/types.h"

#include <cstdint>

/// Fonts and text of the graphics interface. Text is 8-bit; its bytes are read in the character set of
/// the selected font. All lengths are in the logical units of the context. Functions that answer an int
/// answer non-zero for success.
namespace klv {

// Text alignment.
inline constexpr std::uint32_t TA_NOUPDATECP = 0;
inline constexpr std::uint32_t TA_UPDATECP = 1;
inline constexpr std::uint32_t TA_LEFT = 0;
inline constexpr std::uint32_t TA_RIGHT = 2;
inline constexpr std::uint32_t TA_CENTER = 6;
inline constexpr std::uint32_t TA_TOP = 0;
inline constexpr std::uint32_t TA_BOTTOM = 8;
inline constexpr std::uint32_t TA_BASELINE = 24;

// Options of ExtTextOutA.
inline constexpr std::uint32_t ETO_OPAQUE = 2;
inline constexpr std::uint32_t ETO_CLIPPED = 4;

// Weights.
inline constexpr std::int32_t FW_DONTCARE = 0;
inline constexpr std::int32_t FW_NORMAL = 400;
inline constexpr std::int32_t FW_SEMIBOLD = 600;
inline constexpr std::int32_t FW_BOLD = 700;

// Character sets.
inline constexpr std::uint8_t ANSI_CHARSET = 0;
inline constexpr std::uint8_t DEFAULT_CHARSET = 1;
inline constexpr std::uint8_t SYMBOL_CHARSET = 2;
inline constexpr std::uint8_t MAC_CHARSET = 77;
inline constexpr std::uint8_t SHIFTJIS_CHARSET = 128;
inline constexpr std::uint8_t HANGUL_CHARSET = 129;
inline constexpr std::uint8_t JOHAB_CHARSET = 130;
inline constexpr std::uint8_t GB2312_CHARSET = 134;
inline constexpr std::uint8_t CHINESEBIG5_CHARSET = 136;
inline constexpr std::uint8_t GREEK_CHARSET = 161;
inline constexpr std::uint8_t TURKISH_CHARSET = 162;
inline constexpr std::uint8_t VIETNAMESE_CHARSET = 163;
inline constexpr std::uint8_t HEBREW_CHARSET = 177;
inline constexpr std::uint8_t ARABIC_CHARSET = 178;
inline constexpr std::uint8_t BALTIC_CHARSET = 186;
inline constexpr std::uint8_t RUSSIAN_CHARSET = 204;
inline constexpr std::uint8_t THAI_CHARSET = 222;
inline constexpr std::uint8_t EASTEUROPE_CHARSET = 238;
inline constexpr std::uint8_t OEM_CHARSET = 255;

// Pitch (low bits) and family (high bits) of LOGFONTA::lfPitchAndFamily.
inline constexpr std::uint8_t DEFAULT_PITCH = 0;
inline constexpr std::uint8_t FIXED_PITCH = 1;
inline constexpr std::uint8_t VARIABLE_PITCH = 2;
inline constexpr std::uint8_t FF_DONTCARE = 0;
inline constexpr std::uint8_t FF_ROMAN = 0x10;
inline constexpr std::uint8_t FF_SWISS = 0x20;
inline constexpr std::uint8_t FF_MODERN = 0x30;
inline constexpr std::uint8_t FF_SCRIPT = 0x40;
inline constexpr std::uint8_t FF_DECORATIVE = 0x50;

// Low bits of TEXTMETRICA::tmPitchAndFamily. The first is set for a font that is NOT fixed-pitch.
inline constexpr std::uint8_t TMPF_FIXED_PITCH = 1;
inline constexpr std::uint8_t TMPF_VECTOR = 2;
inline constexpr std::uint8_t TMPF_TRUETYPE = 4;
inline constexpr std::uint8_t TMPF_DEVICE = 8;

/// Kind of font told to an enumeration callback.
inline constexpr std::uint32_t TRUETYPE_FONTTYPE = 4;

/// A font of the given description. The face is looked up when the font is first measured or drawn:
/// a family that is not installed gets the metric-compatible one, any other the nearest. A negative
/// lfHeight is a character height (without internal leading), a positive one a cell height, 0 a default.
/// \return null when memory is out; delete it with DeleteObject.
HFONT CreateFontIndirectA(const LOGFONTA* description) noexcept;

/// Measures of the selected font. \return 0 when dc is not a context.
int GetTextMetricsA(HDC dc, TEXTMETRICA* metrics) noexcept;
/// Width and height of a string, character extra and justification included, escapement ignored.
int GetTextExtentPoint32A(HDC dc, const char* text, int count, SIZE* extent) noexcept;
/// Advance widths of the characters first to last (both included).
int GetCharWidthA(HDC dc, std::uint32_t first, std::uint32_t last, std::int32_t* widths) noexcept;
int GetCharWidth32A(HDC dc, std::uint32_t first, std::uint32_t last, std::int32_t* widths) noexcept;
/// The font's kerning pairs between characters of its set, at most count of them; with null pairs their
/// number. \return pairs written or present.
std::uint32_t GetKerningPairsA(HDC dc, std::uint32_t count, KERNINGPAIR* pairs) noexcept;

/// Called for each family; answers 0 to stop.
using FONTENUMPROCA = int (*)(const LOGFONTA*, const TEXTMETRICA*, std::uint32_t type, LPARAM data);
/// Enumerates the installed families in alphabetical order, or the styles of one family.
/// \return the last answer of the callback, 1 when it was never called.
int EnumFontFamiliesA(HDC dc, const char* family, FONTENUMPROCA callback, LPARAM data) noexcept;

/// Sets where the reference point of a string lies (TA_ values). \return the previous value.
std::uint32_t SetTextAlign(HDC dc, std::uint32_t align) noexcept;
/// Sets the space added after every character. \return the previous value.
int SetTextCharacterExtra(HDC dc, int extra) noexcept;
/// Spreads extra over the next count break characters (spaces) of the strings drawn; 0, 0 ends it.
int SetTextJustification(HDC dc, int extra, int count) noexcept;

/// Draws a string in the text colour, on the background colour when the background mode is opaque.
int TextOutA(HDC dc, int x, int y, const char* text, int count) noexcept;
/// The same with a rectangle that is filled (ETO_OPAQUE) or clips (ETO_CLIPPED), and with the distance
/// from each character's origin to the next in dx, or null for the font's own advances.
int ExtTextOutA(HDC dc, int x, int y, std::uint32_t options, const RECT* rect, const char* text,
    std::uint32_t count, const std::int32_t* dx) noexcept;

} // namespace klv
