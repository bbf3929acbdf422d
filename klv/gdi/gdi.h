#pragma once

#include "klv/base/types.h"

/// The graphics device interface: drawing contexts, the objects that are selected into them, and what can
/// be drawn. Functions keep their documented names, argument orders and meanings; x grows to the right, y
/// downwards, and rectangles leave out their right and bottom edges. A function that is given a handle of
/// another kind, or one that was deleted, does nothing and answers 0 (or null, or the value it says).
/// Nothing here throws. Different threads may use their own contexts and objects at the same time; one of
/// these is for one thread at a time.
///
/// Functions on fonts and text are in klv/gdi/text.h, which this header includes.
namespace klv {

// ---- Drawing contexts ----------------------------------------------------------------------------------

/// A context on the screen ("DISPLAY"); other drivers answer null.
HDC CreateDCA(const char* driver, const char* device, const char* output, const void* mode) noexcept;
/// As CreateDCA, for asking only.
HDC CreateICA(const char* driver, const char* device, const char* output, const void* mode) noexcept;
/// A memory context with a 1 x 1 monochrome bitmap selected. It takes over the resolution of dc; null means
/// the screen.
HDC CreateCompatibleDC(HDC dc) noexcept;
BOOL DeleteDC(HDC dc) noexcept;
/// A context on the in-memory screen, whose pixels are allocated when they are first drawn or read.
HDC GetDC(HWND window) noexcept;
INT ReleaseDC(HWND window, HDC dc) noexcept;

/// \return the number of saved states, this one included; 0 when it fails.
INT SaveDC(HDC dc) noexcept;
/// Positive: the state of that number; negative: counted back from the last saved one (-1).
BOOL RestoreDC(HDC dc, INT saved) noexcept;

inline constexpr INT DRIVERVERSION = 0;
inline constexpr INT TECHNOLOGY = 2;
inline constexpr INT HORZSIZE = 4; ///< millimetres
inline constexpr INT VERTSIZE = 6;
inline constexpr INT HORZRES = 8; ///< pixels; of a memory context: the screen's, at least its bitmap's
inline constexpr INT VERTRES = 10;
inline constexpr INT BITSPIXEL = 12;
inline constexpr INT PLANES = 14;
inline constexpr INT NUMBRUSHES = 16;
inline constexpr INT NUMPENS = 18;
inline constexpr INT NUMFONTS = 22;
inline constexpr INT NUMCOLORS = 24; ///< -1 above 8 bits a pixel
inline constexpr INT CURVECAPS = 28;
inline constexpr INT LINECAPS = 30;
inline constexpr INT POLYGONALCAPS = 32;
inline constexpr INT TEXTCAPS = 34;
inline constexpr INT CLIPCAPS = 36;
inline constexpr INT RASTERCAPS = 38;
inline constexpr INT ASPECTX = 40;
inline constexpr INT ASPECTY = 42;
inline constexpr INT ASPECTXY = 44;
inline constexpr INT LOGPIXELSX = 88;
inline constexpr INT LOGPIXELSY = 90;
inline constexpr INT SIZEPALETTE = 104;
inline constexpr INT NUMRESERVED = 106;
inline constexpr INT COLORRES = 108;
inline constexpr INT PHYSICALWIDTH = 110;
inline constexpr INT PHYSICALHEIGHT = 111;
inline constexpr INT PHYSICALOFFSETX = 112;
inline constexpr INT PHYSICALOFFSETY = 113;

/// Answers of TECHNOLOGY.
inline constexpr INT DT_PLOTTER = 0;
inline constexpr INT DT_RASDISPLAY = 1;
inline constexpr INT DT_RASPRINTER = 2;
inline constexpr INT DT_METAFILE = 5;

/// Bits of RASTERCAPS.
inline constexpr INT RC_BITBLT = 0x0001;
inline constexpr INT RC_DI_BITMAP = 0x0080;
inline constexpr INT RC_PALETTE = 0x0100;
inline constexpr INT RC_DIBTODEV = 0x0200;
inline constexpr INT RC_STRETCHBLT = 0x0800;
inline constexpr INT RC_STRETCHDIB = 0x2000;

INT GetDeviceCaps(HDC dc, INT index) noexcept;

/// Driver escapes. A raster surface supports none of them (QUERYESCSUPPORT answers 0).
inline constexpr INT QUERYESCSUPPORT = 8;
inline constexpr INT POSTSCRIPT_PASSTHROUGH = 4115;
inline constexpr INT CLIP_TO_PATH = 4097;
inline constexpr INT BEGIN_PATH = 4096;
inline constexpr INT END_PATH = 4098;
INT Escape(HDC dc, INT function, INT size, const char* in, void* out) noexcept;

// This system's own additions.

/// Sets what LOGPIXELSX and LOGPIXELSY answer (96 at first), for surfaces drawn at a multiple of their size.
BOOL SetDeviceResolution(HDC dc, INT dots_per_inch) noexcept;

/// Width in device pixels of the thinnest lines: a pixel of 96 to the inch, at least one.
INT ThinnestLine(HDC dc) noexcept;
/// From now on dc, and the contexts made compatible with it from now on, count together what they paint.
BOOL CountPaintedPixels(HDC dc) noexcept;
/// The work of painting counted so far, in pixels that a fill would have painted in the same time.
std::uint64_t PaintedPixels(HDC dc) noexcept;
/// Size of the in-memory screen in pixels (1280 x 1024 at first); its pixels start over.
BOOL SetScreenSize(INT width, INT height) noexcept;
/// The process's screen draws with 8 bits and a palette, or with 16, 24 or 32 bits (32 at first).
BOOL SetScreenDepth(INT bits_per_pixel) noexcept;

inline constexpr INT SM_CXSCREEN = 0;
inline constexpr INT SM_CYSCREEN = 1;
INT GetSystemMetrics(INT index) noexcept;
/// The colours of the user interface (COLOR_SCROLLBAR = 0 to COLOR_INFOBK = 24); 0 for any other index.
COLORREF GetSysColor(INT index) noexcept;

// ---- Objects -------------------------------------------------------------------------------------------

/// Selects a pen, brush, font or bitmap, or copies a region as the clip region.
/// \return what was selected before; for a region 1 empty, 2 one rectangle, 3 more, as a handle.
HGDIOBJ SelectObject(HDC dc, HGDIOBJ object) noexcept;
/// A stock object stays and answers 1. An object that is still selected goes once it no longer is.
BOOL DeleteObject(HGDIOBJ object) noexcept;

inline constexpr UINT OBJ_PEN = 1;
inline constexpr UINT OBJ_BRUSH = 2;
inline constexpr UINT OBJ_DC = 3;
inline constexpr UINT OBJ_METADC = 4;
inline constexpr UINT OBJ_PAL = 5;
inline constexpr UINT OBJ_FONT = 6;
inline constexpr UINT OBJ_BITMAP = 7;
inline constexpr UINT OBJ_REGION = 8;
inline constexpr UINT OBJ_MEMDC = 10;
HGDIOBJ GetCurrentObject(HDC dc, UINT type) noexcept;
UINT GetObjectType(HGDIOBJ object) noexcept;

/// Copies LOGPEN, LOGBRUSH, LOGFONTA, BITMAP or DIBSECTION (by size) or the WORD count of a palette.
/// \return bytes copied; with a null buffer the bytes needed.
INT GetObjectA(HGDIOBJ object, INT size, void* buffer) noexcept;

inline constexpr INT WHITE_BRUSH = 0;
inline constexpr INT LTGRAY_BRUSH = 1;
inline constexpr INT GRAY_BRUSH = 2;
inline constexpr INT DKGRAY_BRUSH = 3;
inline constexpr INT BLACK_BRUSH = 4;
inline constexpr INT NULL_BRUSH = 5;
inline constexpr INT HOLLOW_BRUSH = NULL_BRUSH;
inline constexpr INT WHITE_PEN = 6;
inline constexpr INT BLACK_PEN = 7;
inline constexpr INT NULL_PEN = 8;
inline constexpr INT OEM_FIXED_FONT = 10;
inline constexpr INT ANSI_FIXED_FONT = 11;
inline constexpr INT ANSI_VAR_FONT = 12;
inline constexpr INT SYSTEM_FONT = 13;
inline constexpr INT DEVICE_DEFAULT_FONT = 14;
inline constexpr INT DEFAULT_PALETTE = 15;
inline constexpr INT SYSTEM_FIXED_FONT = 16;
inline constexpr INT DEFAULT_GUI_FONT = 17;
HGDIOBJ GetStockObject(INT index) noexcept;

inline constexpr UINT PS_SOLID = 0;
inline constexpr UINT PS_DASH = 1;
inline constexpr UINT PS_DOT = 2;
inline constexpr UINT PS_DASHDOT = 3;
inline constexpr UINT PS_DASHDOTDOT = 4;
inline constexpr UINT PS_NULL = 5;
inline constexpr UINT PS_INSIDEFRAME = 6;
/// Width in logical units; 0 is one pixel at any mapping. Dashed styles need a width of at most one pixel,
/// wider pens are solid. Wide pens have round ends and joins.
HPEN CreatePen(UINT style, INT width, COLORREF colour) noexcept;
HPEN CreatePenIndirect(const LOGPEN* pen) noexcept;

inline constexpr UINT BS_SOLID = 0;
inline constexpr UINT BS_NULL = 1;
inline constexpr UINT BS_HOLLOW = BS_NULL;
inline constexpr UINT BS_HATCHED = 2;
inline constexpr UINT BS_PATTERN = 3;
inline constexpr UINT BS_DIBPATTERN = 5;
inline constexpr UINT BS_DIBPATTERNPT = 6;
inline constexpr INT HS_HORIZONTAL = 0;
inline constexpr INT HS_VERTICAL = 1;
inline constexpr INT HS_FDIAGONAL = 2; ///< falling to the right
inline constexpr INT HS_BDIAGONAL = 3; ///< rising to the right
inline constexpr INT HS_CROSS = 4;
inline constexpr INT HS_DIAGCROSS = 5;
HBRUSH CreateSolidBrush(COLORREF colour) noexcept;
/// Lines in colour; between them the background colour when the background mode is OPAQUE.
HBRUSH CreateHatchBrush(INT style, COLORREF colour) noexcept;
/// Repeats a copy of bitmap, of any size. Bits 0 of a monochrome bitmap paint in the text colour, bits 1 in
/// the background colour.
HBRUSH CreatePatternBrush(HBITMAP bitmap) noexcept;
/// Repeats a copy of a packed bitmap (header, colour table, bits); usage is DIB_RGB_COLORS or
/// DIB_PAL_COLORS.
HBRUSH CreateDIBPatternBrush(HGLOBAL packed, UINT usage) noexcept;
/// As CreateDIBPatternBrush, from memory. The bitmap's own sizes are trusted: it must be complete.
HBRUSH CreateDIBPatternBrushPt(const void* packed, UINT usage) noexcept;
HBRUSH CreateBrushIndirect(const LOGBRUSH* brush) noexcept;

// ---- Attributes of a context ---------------------------------------------------------------------------

inline constexpr INT TRANSPARENT = 1;
inline constexpr INT OPAQUE = 2;
INT SetBkMode(HDC dc, INT mode) noexcept;
COLORREF SetBkColor(HDC dc, COLORREF colour) noexcept;
COLORREF SetTextColor(HDC dc, COLORREF colour) noexcept;

inline constexpr INT R2_BLACK = 1;
inline constexpr INT R2_NOTMERGEPEN = 2;
inline constexpr INT R2_MASKNOTPEN = 3;
inline constexpr INT R2_NOTCOPYPEN = 4;
inline constexpr INT R2_MASKPENNOT = 5;
inline constexpr INT R2_NOT = 6;
inline constexpr INT R2_XORPEN = 7;
inline constexpr INT R2_NOTMASKPEN = 8;
inline constexpr INT R2_MASKPEN = 9;
inline constexpr INT R2_NOTXORPEN = 10;
inline constexpr INT R2_NOP = 11;
inline constexpr INT R2_MERGENOTPEN = 12;
inline constexpr INT R2_COPYPEN = 13;
inline constexpr INT R2_MERGEPENNOT = 14;
inline constexpr INT R2_MERGEPEN = 15;
inline constexpr INT R2_WHITE = 16;
INT SetROP2(HDC dc, INT mode) noexcept;
INT GetROP2(HDC dc) noexcept;

inline constexpr INT ALTERNATE = 1;
inline constexpr INT WINDING = 2;
INT SetPolyFillMode(HDC dc, INT mode) noexcept;

inline constexpr INT BLACKONWHITE = 1;
inline constexpr INT WHITEONBLACK = 2;
inline constexpr INT COLORONCOLOR = 3;
inline constexpr INT HALFTONE = 4;
/// How StretchBlt and StretchDIBits join the pixels that shrinking drops: AND, OR, not at all, average.
INT SetStretchBltMode(HDC dc, INT mode) noexcept;

// ---- Mapping -------------------------------------------------------------------------------------------

inline constexpr INT MM_TEXT = 1;
inline constexpr INT MM_LOMETRIC = 2;
inline constexpr INT MM_HIMETRIC = 3;
inline constexpr INT MM_LOENGLISH = 4;
inline constexpr INT MM_HIENGLISH = 5;
inline constexpr INT MM_TWIPS = 6;
inline constexpr INT MM_ISOTROPIC = 7;
inline constexpr INT MM_ANISOTROPIC = 8;
INT SetMapMode(HDC dc, INT mode) noexcept;
INT GetMapMode(HDC dc) noexcept;
BOOL SetWindowOrgEx(HDC dc, INT x, INT y, POINT* old) noexcept;
BOOL SetWindowExtEx(HDC dc, INT cx, INT cy, SIZE* old) noexcept;
BOOL SetViewportOrgEx(HDC dc, INT x, INT y, POINT* old) noexcept;
BOOL SetViewportExtEx(HDC dc, INT cx, INT cy, SIZE* old) noexcept;
BOOL GetWindowExtEx(HDC dc, SIZE* extent) noexcept;
BOOL GetViewportExtEx(HDC dc, SIZE* extent) noexcept;
BOOL OffsetWindowOrgEx(HDC dc, INT x, INT y, POINT* old) noexcept;
BOOL OffsetViewportOrgEx(HDC dc, INT x, INT y, POINT* old) noexcept;
BOOL ScaleWindowExtEx(HDC dc, INT x_num, INT x_denom, INT y_num, INT y_denom, SIZE* old) noexcept;
BOOL ScaleViewportExtEx(HDC dc, INT x_num, INT x_denom, INT y_num, INT y_denom, SIZE* old) noexcept;
BOOL LPtoDP(HDC dc, POINT* points, INT count) noexcept;
BOOL DPtoLP(HDC dc, POINT* points, INT count) noexcept;

// ---- Lines and figures ---------------------------------------------------------------------------------

BOOL MoveToEx(HDC dc, INT x, INT y, POINT* old) noexcept;
/// Draws up to, but without, the end point, which becomes the current position.
BOOL LineTo(HDC dc, INT x, INT y) noexcept;
BOOL GetCurrentPositionEx(HDC dc, POINT* position) noexcept;
BOOL Polyline(HDC dc, const POINT* points, INT count) noexcept;
/// count is 3 n + 1.
BOOL PolyBezier(HDC dc, const POINT* points, DWORD count) noexcept;

COLORREF SetPixel(HDC dc, INT x, INT y, COLORREF colour) noexcept;
BOOL SetPixelV(HDC dc, INT x, INT y, COLORREF colour) noexcept;
/// CLR_INVALID outside the clip region or the surface.
COLORREF GetPixel(HDC dc, INT x, INT y) noexcept;

BOOL Polygon(HDC dc, const POINT* points, INT count) noexcept;
BOOL PolyPolygon(HDC dc, const POINT* points, const INT* counts, INT polygons) noexcept;
BOOL Rectangle(HDC dc, INT left, INT top, INT right, INT bottom) noexcept;
BOOL RoundRect(HDC dc, INT left, INT top, INT right, INT bottom, INT width, INT height) noexcept;
BOOL Ellipse(HDC dc, INT left, INT top, INT right, INT bottom) noexcept;
/// Fills what Ellipse would fill of the outer box and would not of the inner one, without an outline. Nested
/// ellipses painted from the outside in come out the same, and each pixel is written once.
BOOL EllipseRing(HDC dc, const RECT& outer, const RECT& inner) noexcept;
/// Arcs run from the ray through the start point to the ray through the end point, counter-clockwise as
/// seen; equal rays make the whole ellipse.
BOOL Arc(HDC dc, INT left, INT top, INT right, INT bottom, INT x_start, INT y_start, INT x_end,
    INT y_end) noexcept;
BOOL Pie(HDC dc, INT left, INT top, INT right, INT bottom, INT x_start, INT y_start, INT x_end,
    INT y_end) noexcept;
BOOL Chord(HDC dc, INT left, INT top, INT right, INT bottom, INT x_start, INT y_start, INT x_end,
    INT y_end) noexcept;
INT FillRect(HDC dc, const RECT* rect, HBRUSH brush) noexcept;

inline constexpr UINT FLOODFILLBORDER = 0;
inline constexpr UINT FLOODFILLSURFACE = 1;
BOOL ExtFloodFill(HDC dc, INT x, INT y, COLORREF colour, UINT type) noexcept;

// ---- Bitmaps and block copies --------------------------------------------------------------------------

HBITMAP CreateBitmap(INT width, INT height, UINT planes, UINT bits_per_pixel, const void* bits) noexcept;
/// A bitmap of the depth of dc's surface (monochrome on a fresh memory context).
HBITMAP CreateCompatibleBitmap(HDC dc, INT width, INT height) noexcept;

/// A bitmap whose pixels the caller can reach through *bits. File mappings are not taken: section must be
/// null.
HBITMAP CreateDIBSection(
    HDC dc, const BITMAPINFO* info, UINT usage, void** bits, HANDLE section, DWORD offset) noexcept;
UINT GetDIBColorTable(HDC dc, UINT first, UINT count, RGBQUAD* colours) noexcept;

/// Reads rows into the format that info asks for and writes the colour table; null bits fill in the header
/// (biBitCount 0: the header only). \return rows read; 0 when it fails.
INT GetDIBits(
    HDC dc, HBITMAP bitmap, UINT start, UINT lines, void* bits, BITMAPINFO* info, UINT usage) noexcept;

// Named ternary raster operations; any other documented 32-bit code works, its third byte is the truth
// table.
inline constexpr DWORD SRCCOPY = 0x00CC0020;
inline constexpr DWORD SRCPAINT = 0x00EE0086;
inline constexpr DWORD SRCAND = 0x008800C6;
inline constexpr DWORD SRCINVERT = 0x00660046;
inline constexpr DWORD SRCERASE = 0x00440328;
inline constexpr DWORD NOTSRCCOPY = 0x00330008;
inline constexpr DWORD NOTSRCERASE = 0x001100A6;
inline constexpr DWORD MERGECOPY = 0x00C000CA;
inline constexpr DWORD MERGEPAINT = 0x00BB0226;
inline constexpr DWORD PATCOPY = 0x00F00021;
inline constexpr DWORD PATPAINT = 0x00FB0A09;
inline constexpr DWORD PATINVERT = 0x005A0049;
inline constexpr DWORD DSTINVERT = 0x00550009;
inline constexpr DWORD BLACKNESS = 0x00000042;
inline constexpr DWORD WHITENESS = 0x00FF0062;

BOOL PatBlt(HDC dc, INT x, INT y, INT width, INT height, DWORD rop) noexcept;
/// A monochrome source becomes the destination's text (0) and background (1) colour; on a monochrome
/// destination, source pixels of the source's background colour become 1, all others 0.
BOOL BitBlt(
    HDC dc, INT x, INT y, INT width, INT height, HDC source, INT x_source, INT y_source, DWORD rop) noexcept;
/// Extents of unequal sign mirror.
BOOL StretchBlt(HDC dc, INT x, INT y, INT width, INT height, HDC source, INT x_source, INT y_source,
    INT source_width, INT source_height, DWORD rop) noexcept;
/// The source rectangle counts from the lower left corner of a bottom-up bitmap. bits must hold as many rows
/// as the header says. \return rows copied; 0 when it fails.
INT StretchDIBits(HDC dc, INT x, INT y, INT width, INT height, INT x_source, INT y_source, INT source_width,
    INT source_height, const void* bits, const BITMAPINFO* info, UINT usage, DWORD rop) noexcept;
INT SetDIBitsToDevice(HDC dc, INT x, INT y, DWORD width, DWORD height, INT x_source, INT y_source,
    UINT start_line, UINT lines, const void* bits, const BITMAPINFO* info, UINT usage) noexcept;
BOOL GdiFlush() noexcept;

// ---- Regions and clipping ------------------------------------------------------------------------------

inline constexpr INT ERROR_REGION = 0;
inline constexpr INT NULLREGION = 1;
inline constexpr INT SIMPLEREGION = 2;
inline constexpr INT COMPLEXREGION = 3;
inline constexpr INT RGN_AND = 1;
inline constexpr INT RGN_OR = 2;
inline constexpr INT RGN_XOR = 3;
inline constexpr INT RGN_DIFF = 4;
inline constexpr INT RGN_COPY = 5;

HRGN CreateRectRgn(INT left, INT top, INT right, INT bottom) noexcept;
HRGN CreateEllipticRgn(INT left, INT top, INT right, INT bottom) noexcept;
HRGN CreatePolygonRgn(const POINT* points, INT count, INT mode) noexcept;
HRGN CreatePolyPolygonRgn(const POINT* points, const INT* counts, INT polygons, INT mode) noexcept;
INT CombineRgn(HRGN result, HRGN first, HRGN second, INT mode) noexcept;
INT GetRgnBox(HRGN region, RECT* box) noexcept;
INT OffsetRgn(HRGN region, INT x, INT y) noexcept;
BOOL PtInRegion(HRGN region, INT x, INT y) noexcept;
BOOL EqualRgn(HRGN first, HRGN second) noexcept;

struct RGNDATAHEADER {
    DWORD dwSize;
    DWORD iType;
    DWORD nCount;
    DWORD nRgnSize;
    RECT rcBound;
};
/// nCount RECTs follow the header, sorted by top, then by left.
struct RGNDATA {
    RGNDATAHEADER rdh;
    char Buffer[1];
};
inline constexpr DWORD RDH_RECTANGLES = 1;
/// \return bytes written; the bytes needed when data is null; 0 when size is too small.
DWORD GetRegionData(HRGN region, DWORD size, RGNDATA* data) noexcept;

/// Copies region (device units) as the clip region; null removes it.
INT SelectClipRgn(HDC dc, HRGN region) noexcept;
INT IntersectClipRect(HDC dc, INT left, INT top, INT right, INT bottom) noexcept;
INT ExcludeClipRect(HDC dc, INT left, INT top, INT right, INT bottom) noexcept;
INT OffsetClipRgn(HDC dc, INT x, INT y) noexcept;
/// \return 1 and a copy in region, 0 when there is no clip region, -1 when it fails.
INT GetClipRgn(HDC dc, HRGN region) noexcept;
INT GetClipBox(HDC dc, RECT* box) noexcept;
BOOL PtVisible(HDC dc, INT x, INT y) noexcept;
BOOL RectVisible(HDC dc, const RECT* rect) noexcept;
BOOL FillRgn(HDC dc, HRGN region, HBRUSH brush) noexcept;
BOOL PaintRgn(HDC dc, HRGN region) noexcept;
BOOL InvertRgn(HDC dc, HRGN region) noexcept;
BOOL FrameRgn(HDC dc, HRGN region, HBRUSH brush, INT width, INT height) noexcept;

// ---- Palettes and colours ------------------------------------------------------------------------------

HPALETTE CreatePalette(const LOGPALETTE* palette) noexcept;
HPALETTE SelectPalette(HDC dc, HPALETTE palette, BOOL background) noexcept;
/// \return entries whose realisation changed.
UINT RealizePalette(HDC dc) noexcept;
UINT SetPaletteEntries(HPALETTE palette, UINT first, UINT count, const PALETTEENTRY* entries) noexcept;
/// Changes entries that have PC_RESERVED set.
BOOL AnimatePalette(HPALETTE palette, UINT first, UINT count, const PALETTEENTRY* entries) noexcept;
BOOL ResizePalette(HPALETTE palette, UINT entries) noexcept;
/// The colour that dc's surface would show for a solid pen of this colour.
COLORREF GetNearestColor(HDC dc, COLORREF colour) noexcept;
/// 0 where the surface has no palette.
UINT GetSystemPaletteEntries(HDC dc, UINT first, UINT count, PALETTEENTRY* entries) noexcept;

} // namespace klv

#include "klv/gdi/text.h"
