#pragma once

#include <cstddef>
#include <cstdint>

/// The platform's own vocabulary: integer names, handles and the plain records that its functions take.
/// Records follow the documented field names and orders; widths are fixed (a LONG has 32 bits everywhere).
namespace klv {

using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using UINT = std::uint32_t;
using INT = std::int32_t;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using SHORT = std::int16_t;
using USHORT = std::uint16_t;
using BOOL = std::int32_t;
using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;
using LRESULT = std::intptr_t;
using HRESULT = std::int32_t;
using ATOM = std::uint16_t;

inline constexpr BOOL TRUE = 1;
inline constexpr BOOL FALSE = 0;
inline constexpr std::size_t MAX_PATH = 260;

// ---- Handles: opaque, each of its own type -------------------------------------------------------------

struct HANDLE__ { };
struct HDC__ { };
struct HGDIOBJ__ { };
struct HPEN__ : HGDIOBJ__ { };
struct HBRUSH__ : HGDIOBJ__ { };
struct HFONT__ : HGDIOBJ__ { };
struct HBITMAP__ : HGDIOBJ__ { };
struct HRGN__ : HGDIOBJ__ { };
struct HPALETTE__ : HGDIOBJ__ { };
struct HMETAFILE__ { };
struct HENHMETAFILE__ { };
struct HWND__ { };
struct HINSTANCE__ { };
struct HRSRC__ { };
struct HGLOBAL__ { };
struct HDROP__ { };
struct HKEY__ { };
struct HICON__ { };

using HANDLE = HANDLE__*;
using HDC = HDC__*;
/// Any object that can be selected into a drawing context. The handles of such objects convert to it; the
/// answer of SelectObject is turned back with static_cast.
using HGDIOBJ = HGDIOBJ__*;
using HPEN = HPEN__*;
using HBRUSH = HBRUSH__*;
using HFONT = HFONT__*;
using HBITMAP = HBITMAP__*;
using HRGN = HRGN__*;
using HPALETTE = HPALETTE__*;
using HMETAFILE = HMETAFILE__*;
using HENHMETAFILE = HENHMETAFILE__*;
using HWND = HWND__*;
using HINSTANCE = HINSTANCE__*;
using HMODULE = HINSTANCE;
using HRSRC = HRSRC__*;
using HGLOBAL = HGLOBAL__*;
using HDROP = HDROP__*;
using HKEY = HKEY__*;
using HICON = HICON__*;
using HCURSOR = HICON__*;

/// A function found by name in a module; cast to its real type before calling.
using FARPROC = void (*)();

// ---- Geometry ------------------------------------------------------------------------------------------

struct POINT {
    LONG x;
    LONG y;
    friend bool operator==(const POINT&, const POINT&) = default;
};

struct SIZE {
    LONG cx;
    LONG cy;
    friend bool operator==(const SIZE&, const SIZE&) = default;
};

/// Right and bottom are exclusive in every function that does not say otherwise.
struct RECT {
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;
    friend bool operator==(const RECT&, const RECT&) = default;
};

struct POINTS {
    SHORT x;
    SHORT y;
};

// ---- Colours and palettes ------------------------------------------------------------------------------

/// 0x00bbggrr; 0x01 in the top byte is a palette index, 0x02 a palette-relative colour.
using COLORREF = std::uint32_t;

inline constexpr COLORREF CLR_INVALID = 0xFFFFFFFF;

[[nodiscard]] constexpr COLORREF RGB(unsigned red, unsigned green, unsigned blue)
{
    return (red & 0xFFU) | (green & 0xFFU) << 8 | (blue & 0xFFU) << 16;
}
[[nodiscard]] constexpr COLORREF PALETTERGB(unsigned red, unsigned green, unsigned blue)
{
    return 0x02000000U | RGB(red, green, blue);
}
[[nodiscard]] constexpr COLORREF PALETTEINDEX(unsigned index) { return 0x01000000U | (index & 0xFFFFU); }
[[nodiscard]] constexpr BYTE GetRValue(COLORREF c) { return static_cast<BYTE>(c & 0xFFU); }
[[nodiscard]] constexpr BYTE GetGValue(COLORREF c) { return static_cast<BYTE>(c >> 8 & 0xFFU); }
[[nodiscard]] constexpr BYTE GetBValue(COLORREF c) { return static_cast<BYTE>(c >> 16 & 0xFFU); }

struct PALETTEENTRY {
    BYTE peRed;
    BYTE peGreen;
    BYTE peBlue;
    BYTE peFlags;
    friend bool operator==(const PALETTEENTRY&, const PALETTEENTRY&) = default;
};

inline constexpr BYTE PC_RESERVED = 0x01;
inline constexpr BYTE PC_EXPLICIT = 0x02;
inline constexpr BYTE PC_NOCOLLAPSE = 0x04;

/// palNumEntries entries follow; the array stands for the first of them.
struct LOGPALETTE {
    WORD palVersion;
    WORD palNumEntries;
    PALETTEENTRY palPalEntry[1];
};

inline constexpr WORD LOGPALETTE_VERSION = 0x300;

// ---- Bitmaps -------------------------------------------------------------------------------------------

struct RGBQUAD {
    BYTE rgbBlue;
    BYTE rgbGreen;
    BYTE rgbRed;
    BYTE rgbReserved;
    friend bool operator==(const RGBQUAD&, const RGBQUAD&) = default;
};

struct RGBTRIPLE {
    BYTE rgbtBlue;
    BYTE rgbtGreen;
    BYTE rgbtRed;
};

struct BITMAPCOREHEADER {
    DWORD bcSize;
    WORD bcWidth;
    WORD bcHeight;
    WORD bcPlanes;
    WORD bcBitCount;
};

struct BITMAPINFOHEADER {
    DWORD biSize;
    LONG biWidth;
    LONG biHeight; ///< rows; negative for top-down
    WORD biPlanes;
    WORD biBitCount;
    DWORD biCompression;
    DWORD biSizeImage;
    LONG biXPelsPerMeter;
    LONG biYPelsPerMeter;
    DWORD biClrUsed;
    DWORD biClrImportant;
};
static_assert(sizeof(BITMAPINFOHEADER) == 40);

/// The colour table follows the header; the array stands for its first entry.
struct BITMAPINFO {
    BITMAPINFOHEADER bmiHeader;
    RGBQUAD bmiColors[1];
};

/// In memory only: on disk the record has 14 bytes without padding and is encoded field by field.
struct BITMAPFILEHEADER {
    WORD bfType;
    DWORD bfSize;
    WORD bfReserved1;
    WORD bfReserved2;
    DWORD bfOffBits;
};

inline constexpr DWORD BI_RGB = 0;
inline constexpr DWORD BI_RLE8 = 1;
inline constexpr DWORD BI_RLE4 = 2;
inline constexpr DWORD BI_BITFIELDS = 3;

inline constexpr UINT DIB_RGB_COLORS = 0;
inline constexpr UINT DIB_PAL_COLORS = 1;

struct BITMAP {
    LONG bmType;
    LONG bmWidth;
    LONG bmHeight;
    LONG bmWidthBytes;
    WORD bmPlanes;
    WORD bmBitsPixel;
    void* bmBits;
};

struct DIBSECTION {
    BITMAP dsBm;
    BITMAPINFOHEADER dsBmih;
    DWORD dsBitfields[3];
    HANDLE dshSection;
    DWORD dsOffset;
};

// ---- Pens, brushes, fonts ------------------------------------------------------------------------------

struct LOGPEN {
    UINT lopnStyle;
    POINT lopnWidth; ///< the width is x
    COLORREF lopnColor;
};

/// lbHatch is a hatch style, a bitmap handle or a packed bitmap's address, as lbStyle says.
struct LOGBRUSH {
    UINT lbStyle;
    COLORREF lbColor;
    std::uintptr_t lbHatch;
};

inline constexpr std::size_t LF_FACESIZE = 32;
inline constexpr std::size_t LF_FULLFACESIZE = 64;

struct LOGFONTA {
    LONG lfHeight;
    LONG lfWidth;
    LONG lfEscapement; ///< tenths of a degree, counter-clockwise
    LONG lfOrientation;
    LONG lfWeight;
    BYTE lfItalic;
    BYTE lfUnderline;
    BYTE lfStrikeOut;
    BYTE lfCharSet;
    BYTE lfOutPrecision;
    BYTE lfClipPrecision;
    BYTE lfQuality;
    BYTE lfPitchAndFamily;
    char lfFaceName[LF_FACESIZE];
};

struct ENUMLOGFONTA {
    LOGFONTA elfLogFont;
    BYTE elfFullName[LF_FULLFACESIZE];
    BYTE elfStyle[LF_FACESIZE];
};

struct TEXTMETRICA {
    LONG tmHeight;
    LONG tmAscent;
    LONG tmDescent;
    LONG tmInternalLeading;
    LONG tmExternalLeading;
    LONG tmAveCharWidth;
    LONG tmMaxCharWidth;
    LONG tmWeight;
    LONG tmOverhang;
    LONG tmDigitizedAspectX;
    LONG tmDigitizedAspectY;
    BYTE tmFirstChar;
    BYTE tmLastChar;
    BYTE tmDefaultChar;
    BYTE tmBreakChar;
    BYTE tmItalic;
    BYTE tmUnderlined;
    BYTE tmStruckOut;
    BYTE tmPitchAndFamily;
    BYTE tmCharSet;
};

struct NEWTEXTMETRICA : TEXTMETRICA {
    DWORD ntmFlags;
    UINT ntmSizeEM;
    UINT ntmCellHeight;
    UINT ntmAvgWidth;
};

struct KERNINGPAIR {
    WORD wFirst;
    WORD wSecond;
    LONG iKernAmount;
};

struct ABC {
    LONG abcA;
    UINT abcB;
    LONG abcC;
};

// ---- Native metafiles ----------------------------------------------------------------------------------

/// In memory only: on disk the header has 18 bytes without padding.
struct METAHEADER {
    WORD mtType;
    WORD mtHeaderSize;
    WORD mtVersion;
    DWORD mtSize;
    WORD mtNoObjects;
    DWORD mtMaxRecord;
    WORD mtNoParameters;
};

struct METARECORD {
    DWORD rdSize; ///< in words, this field included
    WORD rdFunction;
    WORD rdParm[1];
};

/// The objects that the records of a metafile select by number.
struct HANDLETABLE {
    HGDIOBJ objectHandle[1];
};

struct METAFILEPICT {
    LONG mm;
    LONG xExt;
    LONG yExt;
    HMETAFILE hMF;
};

} // namespace klv
