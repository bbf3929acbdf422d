#pragma once

#include "klv/attributes/fill_spec.h"
#include "klv/attributes/font_spec.h"
#include "klv/attributes/line_spec.h"
#include "klv/base/memory.h"
#include "klv/base/types.h"
#include "klv/colour/colour.h"
#include "klv/core/object.h"
#include "klv/core/point.h"
#include "klv/core/real.h"
#include "klv/core/rect.h"
#include "klv/devices/unit_mapping.h"
#include "klv/geometry/shape.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace klv {

class vCHAR;
class vCOLLECTION;
class vFONT;
class vFONTDETAIL;
class vIMAGECOLOUR;
class vMETAFILE;
class vSCREEN;
class vSTRING;
class ITERATOR;
class font_list;
class oDIB;
class oDIBCONTEXT;
class oMFCONTEXT;
class LINEINFO;
class LISTINFO;

enum vDEV_TYPE : std::int32_t {
    vDEV_DISPLAY = 0,
    vDEV_PRINTER = 1, ///< printer or plotter
    vDEV_METAFILE = 2, ///< recorded and native pictures
    vDEV_BITMAP = 4, ///< the off-screen bitmap device (vDISPLAYBMP)
};

/// What a colour becomes before it is drawn.
enum vDISPLAY_MODE : std::int32_t {
    vDISPLAY_NORMAL = 0,
    vDISPLAY_GREYSCALE = 1,
    vDISPLAY_PROCESS_SEPARATION = 2, ///< one of the plates cyan, magenta, yellow, black
    vDISPLAY_SPOT_SEPARATION = 3, ///< the plate of one spot colour
    vDISPLAY_SEPARATION = 4, ///< process or spot, by the kind of the separation colour
};

/// How finely graduated fills are stepped. Any value other than full is low quality.
enum vGRAD_QUALITY : std::int32_t {
    vGRAD_FULL = 0,
    vGRAD_LOW = 1,
};

/// Where text stands in its rectangle.
enum vTEXTALIGN : std::int32_t {
    vTEXT_LEFT = 0,
    vTEXT_RIGHT = 1,
    vTEXT_CENTRE = 2,
};

/// The plate that process separation prints.
enum class separation_plate { cyan, magenta, yellow, black };

/// The abstract drawing surface: one drawing context of the platform, the current line, fill and font with
/// their stacks, the clip area, the mapping from logical units to device pixels, and the drawing operations.
///
/// Every figure becomes an outline that is filled first and stroked second; the private virtual operations
/// at the end of the table do it. Recording devices override the same operations to record instead.
/// Coordinates are logical units, y growing downwards. Drawing reports nothing; without a context it is
/// without effect.
class vDEVICE : public vOBJECT {
public:
    /// A device on dc, which may be null. The context's mapping becomes the device's, and the context works
    /// in pixels until the device is destroyed and puts it back.
    explicit vDEVICE(HDC dc = nullptr) noexcept;
    /// A copy draws on the same context with its own clip area, stacks and fonts. Only the first device
    /// restores the context.
    vDEVICE(const vDEVICE& other);
    vDEVICE& operator=(const vDEVICE& other);

    // ---- The virtual table, in its fixed order ---------------------------------------------------------

    virtual ~vDEVICE();

    virtual vDEV_TYPE DeviceType() const noexcept;

    /// Adds a reference to the context. \return the context, null when there is none.
    virtual HDC GetWinDC() noexcept;
    /// Drops a reference. \return 1
    virtual int ReleaseWinDC() noexcept;

    virtual void LogUnitsPerHorzInch(const int& units) noexcept; ///< 0 is ignored
    virtual int LogUnitsPerHorzInch() const noexcept;
    virtual void LogUnitsPerVertInch(const int& units) noexcept; ///< 0 is ignored
    virtual int LogUnitsPerVertInch() const noexcept;
    virtual int DevUnitsPerHorzInch() const noexcept;
    virtual int DevUnitsPerVertInch() const noexcept;

    /// Finest resolution at which distorted images are rendered, in dots per inch.
    virtual std::uint16_t maxXTransformDPI() const noexcept;
    virtual void maxXTransformDPI(std::uint16_t dpi) noexcept; ///< values below 11 store 10
    virtual std::uint16_t maxYTransformDPI() const noexcept;
    virtual void maxYTransformDPI(std::uint16_t dpi) noexcept; ///< values below 11 store 10

    /// Chooses how colours are shown. In process separation the colour chooses the plate: 100 per cent of
    /// one ink alone; any other colour keeps the plate.
    /// \param show_other_spots 0 hides, on a spot plate, every colour but the separation colour
    /// \param hide_dark non-zero hides colours of at least 98 per cent darkness from the colour plates
    virtual void DisplayMode(
        vDISPLAY_MODE mode, const vCOLOUR& colour, int show_other_spots, int hide_dark) noexcept;
    /// Number of colours of the context: 1 << bits per pixel (capped at 1 << 30).
    virtual int GetNoColours() const noexcept;

    /// Pushes clip, fill, line and font; PopState brings them back.
    virtual void PushState() noexcept;
    virtual void PopState() noexcept;

    /// The current line; setting turns its colour into the one that this device shows.
    virtual void LineSpec(const vLINESPEC& spec) noexcept;
    virtual const vLINESPEC& LineSpec() const noexcept;
    virtual void PushLineSpec() noexcept;
    /// Sets the line last pushed, or the default line, through LineSpec. The fill and the font likewise.
    virtual void PopLineSpec() noexcept;

    virtual void FillSpec(const vFILLSPEC& spec) noexcept;
    virtual const vFILLSPEC& FillSpec() const noexcept;
    virtual void PushFillSpec() noexcept;
    virtual void PopFillSpec() noexcept;

    /// The realised form of the current font; null when memory is out.
    virtual vFONTDETAIL* GetCurFontDetail() noexcept;
    virtual void FontSpec(const vFONTSPEC& spec) noexcept;
    virtual const vFONTSPEC& FontSpec() const noexcept;
    virtual void PushFontSpec() noexcept;
    virtual void PopFontSpec() noexcept;

    /// Combines the clip area with a region in device units (mode RGN_AND to RGN_COPY). The region stays
    /// the caller's; null clears the clip area.
    virtual void ClipArea(HRGN region, int mode) noexcept;
    virtual void ClipArea(const vSHAPE& shape, int mode) noexcept;
    virtual void ClipArea(const vRECT& rect, int mode) noexcept;
    /// Bounds of what can be drawn on.
    virtual vRECT ClipArea() noexcept;
    virtual void ClearClipArea() noexcept;
    virtual void PushClipArea() noexcept;
    virtual void PopClipArea() noexcept;
    /// Whether a point, or any part of a rectangle, lies in the clip area.
    virtual int ClipAreaIntersect(const vPOINT& point) noexcept;
    virtual int ClipAreaIntersect(const vRECT& rect) noexcept;

    /// The shape as a region in device units; the caller deletes it. Null when there is nothing in it.
    virtual HRGN GetShapeAsRegion(const vSHAPE& shape, vFILLMODE mode) noexcept;
    /// The shape as polygons in device units, in new arrays that the caller frees with vMemFree. Both
    /// pointers must point to null. \return number of polygons; 0, and no arrays, when there is nothing.
    virtual int GetShapeAsPoints(const vSHAPE& shape, POINT** points, int** counts) noexcept;

    /// Whether text leaves the background alone (non-zero) or paints it.
    virtual void TextTransparency(int transparent) noexcept;

    virtual void DrawLine(const vPOINT& from, const vPOINT& to) noexcept;
    /// An open line through all points.
    virtual void DrawLine(std::span<const vPOINT> points) noexcept;
    /// An open line through the first count points of a collection.
    virtual void DrawLine(int count, vCOLLECTION& points) noexcept;
    virtual void DrawRect(const vRECT& rect) noexcept;
    /// The corners are circles of radius corner.cx / 2.
    virtual void DrawRoundRect(const vRECT& rect, const vSIZE& corner) noexcept;
    virtual void DrawEllipse(const vRECT& rect) noexcept;
    /// The part of the ellipse in rect, counter-clockwise from the ray through start to that through end.
    virtual void DrawArc(const vRECT& rect, const vPOINT& start, const vPOINT& end) noexcept;
    virtual void DrawPie(const vRECT& rect, const vPOINT& start, const vPOINT& end) noexcept;
    virtual void DrawChord(const vRECT& rect, const vPOINT& start, const vPOINT& end) noexcept;
    virtual void DrawShape(const vSHAPE& shape) noexcept;

    /// Text in a rectangle, turned by angle degrees about pivot. \return non-zero when done.
    virtual int DrawTextA(const vSTRING& text, const vRECT& rect, vTEXTALIGN align, int rotated,
        const vPOINT& pivot, double angle) noexcept;
    virtual void DrawChar(const vCHAR& character, const vPOINT& point) noexcept;
    /// Text from start on, with the distance from each character to the next in advances (device units).
    virtual int DrawTextOnLine(
        const vSTRING& text, const vPOINT& start, const short* advances, int rotated) noexcept;

    virtual void DrawMetafile(vMETAFILE& picture, oMFCONTEXT& context) noexcept;
    /// Draws a bitmap the way the context says; clip (may be null) limits it, in logical units.
    virtual void DrawDIB(const oDIB& bitmap, oDIBCONTEXT& context, vRECT* clip, int flag) noexcept;

    /// \return 0; for subclasses to give it a meaning
    virtual int vDraw(const vRECT& rect) noexcept;
    /// Height of the selected font in logical units.
    virtual int GetLogFontHeight() noexcept;
    /// The context's current position, in device units.
    virtual void LastPoint(POINT& point) noexcept;

private:
    virtual void LineRect(const vRECT& rect) noexcept;
    virtual void FillRect(const vRECT& rect) noexcept;
    virtual void LineEllipse(const vRECT& rect) noexcept;
    virtual void FillEllipse(const vRECT& rect) noexcept;
    virtual void LineShape(const vSHAPE& shape) noexcept;
    virtual void FillShape(const vSHAPE& shape) noexcept;
    virtual int LineText(const vSTRING& text, const vRECT& rect, vTEXTALIGN align, int rotated,
        const vPOINT& pivot, double angle) noexcept;
    virtual int FillText(const vSTRING& text, const vRECT& rect, vTEXTALIGN align, int rotated,
        const vPOINT& pivot, double angle) noexcept;

public:
    // ---- Further drawing -------------------------------------------------------------------------------

    /// An open line through the first count of the points given.
    template <std::same_as<vPOINT>... Points>
    void DrawLine(int count, const vPOINT& first, const Points&... others) noexcept
    {
        const vPOINT points[] = {first, others...};
        const std::size_t given = 1 + sizeof...(others);
        const std::size_t wanted = count < 0 ? 0 : static_cast<std::size_t>(count);
        DrawLine(std::span<const vPOINT>(points, wanted < given ? wanted : given));
    }
    /// Plays a picture into a rectangle as it is.
    void DrawMetafile(vMETAFILE& picture, const vRECT& rect) noexcept;
    /// Draws a bitmap into a rectangle; the colour pointers may be null.
    void DrawDIB(const oDIB& bitmap, const vRECT& rect, const vCOLOUR* override_colour, double angle,
        int flip_horizontally, int flip_vertically, const vCOLOUR* background, int flag) noexcept;

    // ---- Context ---------------------------------------------------------------------------------------

    /// GetWinDC, with the screen palette realised where the context has one. Pair it with ReleaseWinDC.
    HDC ActivateDC() noexcept;
    void HDCAddRef() noexcept { ++dc_references_; }
    void HDCReleaseRef() noexcept { dc_references_ -= dc_references_ > 0; }
    /// The device that ActivateDC was last called on; null when it is gone.
    static vDEVICE* LastDevice() noexcept;

    // ---- Units -----------------------------------------------------------------------------------------

    /// The mapping of points from logical to device units, for the length of one figure.
    unit_mapping Mapping() const noexcept;
    void LPtoDP(vPOINT& point) const noexcept; ///< logical to device, origin added
    void DPtoLP(vPOINT& point) const noexcept;
    void LPtoDP(vRECT& rect) const noexcept; ///< corner by corner
    void DPtoLP(vRECT& rect) const noexcept;
    int LHtoDH(int length) const noexcept; ///< horizontal length, logical to device
    int LVtoDV(int length) const noexcept; ///< vertical length, logical to device
    int DHtoLH(int length) const noexcept;
    int DVtoLV(int length) const noexcept;
    /// Logical units added to every point before it is scaled.
    const vPOINT& Origin() const noexcept { return origin_; }
    void Origin(const vPOINT& origin) noexcept { origin_ = origin; }

    static POINT vPOINTtoPOINT(const vPOINT& point) noexcept;
    static vPOINT POINTtovPOINT(const POINT& point) noexcept;
    static RECT vRECTtoRECT(const vRECT& rect) noexcept;
    static vRECT RECTtovRECT(const RECT& rect) noexcept;
    /// The point half way, each coordinate's sum halved toward zero.
    static vPOINT MidPoint(const vPOINT& a, const vPOINT& b) noexcept;

    // ---- Colours ---------------------------------------------------------------------------------------

    /// What a colour becomes in the current display mode. \param visible receives 1 when it prints on the
    /// current plate, else 0. \param grey when given, receives the colour's darkness as a tint.
    vCOLOUR Convert(const vCOLOUR& colour, int& visible, vCOLOUR* grey = nullptr) const noexcept;
    /// Ink percentage of the current plate.
    int separate_process_colour(const vCOLOUR& colour, int& visible) const noexcept;
    /// Tint of the separation colour.
    int separate_spot_colour(const vCOLOUR& colour, int& visible) const noexcept;
    /// A colour under an image's colour override and balance. \return 1
    static int RGBtoRGB(const vCOLOUR* in, vCOLOUR* out, const vIMAGECOLOUR& override_) noexcept;
    /// Colours a table of 256 entries (blue, green, red, reserved): black takes the colour, white stays.
    /// \return 1
    static int Munge256Palette(std::uint8_t* entries, const vCOLOUR& colour) noexcept;
    /// The colour of the context that is nearest to a colour.
    COLORREF NearestColour(const vCOLOUR& colour) noexcept;
    /// A solid brush, dithered by the platform where the context can't show the colour. Delete it.
    HBRUSH CreateBrush(const vCOLOUR& colour) noexcept;
    /// A brush of the 8 x 8 pattern table: style 2 index 1 to 24, style 3 index 1 to 12; null otherwise.
    HBRUSH CreateGEMBrush(int style, int index) noexcept;

    // ---- Graduated fills -------------------------------------------------------------------------------

    void SetGradQuality(vGRAD_QUALITY quality) noexcept { grad_quality_ = quality; }
    vGRAD_QUALITY GetGradQuality() const noexcept { return grad_quality_; }
    /// Number of steps that a graduation between two colours is worth at the current quality.
    int GetColourRange(COLORREF from, COLORREF to) const noexcept;
    /// The colour step / steps of the way.
    static COLORREF rgb_blend(COLORREF from, COLORREF to, int step, int steps) noexcept;
    /// Distance of two points, truncated.
    static int CalcDist(const POINT& a, const POINT& b) noexcept;

    // ---- Flattening ------------------------------------------------------------------------------------

    /// The shape as polygons in device units, in the process-wide list: valid until the next drawing call.
    /// A closed polygon ends with its first point repeated. \return number of polygons
    int ConvertShapeToPoints(
        const vSHAPE& shape, std::span<const POINT>& points, std::span<const int>& counts) const noexcept;

    // ---- Text and fonts --------------------------------------------------------------------------------

    /// Scale of realised font heights, set while a picture is played; 0 counts as 1.
    void SetFontRatio(const vREAL& ratio) noexcept { font_ratio_ = ratio; }
    const vREAL& GetFontRatio() const noexcept { return font_ratio_; }
    /// Selects the current font. \return its handle; null when there is none, or when rotation is asked of
    /// a font that can't be rotated (the font is then selected unrotated).
    HFONT ActivateFont(int rotated) noexcept;
    void ClearFont() noexcept;
    /// Draws text in the fill colour, without regard to the fill's type.
    int TextOutA(const vSTRING& text, const vRECT& rect, vTEXTALIGN align, int rotated, const vPOINT& pivot,
        double angle) noexcept;
    /// Reads the installed families into the device's table. \return their number
    int LoadFont() noexcept;
    int NoFonts() const noexcept;
    /// The family at the iterator's position, which moves on.
    vFONT& GetFont(ITERATOR& position) noexcept;
    static int EnumFontFamilyProc(
        const LOGFONTA* font, const TEXTMETRICA* metrics, std::uint32_t type, LPARAM device) noexcept;

    // ---- Process-wide state ----------------------------------------------------------------------------

    static vSCREEN& GetScreen() noexcept;
    /// Drawing for interaction: black hairlines, no fills of lines.
    static void FastUpdate(int on) noexcept;
    static int FastUpdate() noexcept;
    static LINEINFO& GetLineInfo() noexcept;
    static LISTINFO& GetListInfo() noexcept;

    /// Whether the current line, or fill, prints on the current plate.
    int LineVisible() const noexcept { return line_visible_; }
    int FillVisible() const noexcept { return fill_visible_; }
    /// Whether drawing goes into a native metafile, which can't clip or answer pixels.
    bool RecordsNatively() const noexcept { return native_metafile_; }

protected:
    HDC dc() const noexcept { return dc_; }
    int DCReferences() const noexcept { return dc_references_; }
    /// Takes the colour count and kind from a context that a derived device provides itself.
    void DescribeContext(HDC dc) noexcept;
    void UsesPalette(bool uses) noexcept { uses_palette_ = uses; }
    /// Selects the clip area into a context that was just made; call it from GetWinDC.
    void SelectClip(HDC dc) noexcept;

private:
    friend class vFONTDETAIL;
    /// The installed families, read by LoadFont; defined beside vFONT.
    struct font_table;
    template <class Spec> using spec_stack = std::vector<Spec, vALLOCATOR<Spec>>;

    void TakeOverMapping(HDC dc) noexcept;
    void ResetNativeContext(HDC dc) noexcept;
    int ReadResolution(int index) const noexcept;
    void SetClip(HRGN region) noexcept;
    /// The shape in the current fill mode as a region, as far as it lies in an area of the device.
    HRGN ClippingRegion(const vSHAPE& shape, const RECT& area) noexcept;
    void ForgetClips() noexcept;
    void CopyClips(const vDEVICE& other) noexcept;
    bool FillWanted() const noexcept;
    bool LineWanted() const noexcept;
    bool MayShow(const vRECT& bounds) noexcept;
    bool HairlineWanted() noexcept;
    void Hairline(std::span<const vPOINT> points) noexcept;
    void LineThrough(std::span<const vPOINT> points) noexcept;
    enum class arc_figure { arc, pie, chord };
    void DrawArcFigure(arc_figure figure, const vRECT& rect, const vPOINT& start, const vPOINT& end) noexcept;
    /// Realises the default font; called by the constructor.
    void SelectDefaultFont() noexcept;
    /// Frees the font details and the table of families; called by the destructor.
    void FreeFonts() noexcept;

    bool uses_palette_ = true;
    bool native_metafile_ = false;
    vGRAD_QUALITY grad_quality_ = vGRAD_FULL;
    int colours_ = 0;
    int saved_dc_ = 0; // 0: this device doesn't restore the context
    std::unique_ptr<font_list> font_details_; // most recently used first
    vREAL font_ratio_;
    std::unique_ptr<font_table> fonts_;
    vFONTDETAIL* current_font_ = nullptr;
    int log_font_height_ = 0;
    HRGN clip_ = nullptr; // null: no clipping
    mutable int log_units_horz_ = 0;
    mutable int dev_units_horz_ = 0; // 0: not read yet
    mutable int log_units_vert_ = 0;
    mutable int dev_units_vert_ = 0;
    vPOINT origin_;
    HDC dc_ = nullptr;
    int dc_references_ = 0;
    std::uint16_t max_x_transform_dpi_ = 150;
    std::uint16_t max_y_transform_dpi_ = 150;
    spec_stack<vLINESPEC> line_stack_;
    spec_stack<vFILLSPEC> fill_stack_;
    spec_stack<vFONTSPEC> font_stack_;
    spec_stack<HRGN> clip_stack_; // owned; null stands for no clipping
    vLINESPEC line_;
    vFILLSPEC fill_;
    // The colours as they were given: the display mode changed those of line_ and fill_, and a pushed
    // record goes through it again when it is popped.
    vCOLOUR line_colour_;
    vCOLOUR fill_colour_from_;
    vCOLOUR fill_colour_to_;
    vDISPLAY_MODE display_mode_ = vDISPLAY_NORMAL;
    vCOLOUR separation_colour_;
    int show_other_spots_ = 1;
    int hide_dark_ = 1;
    int line_visible_ = 1;
    int fill_visible_ = 1;
    separation_plate plate_ = separation_plate::black;
};

/// The context of a device for as long as the object lives.
class active_dc {
public:
    explicit active_dc(vDEVICE& device) noexcept
        : device_(device)
        , dc_(device.ActivateDC())
    {
    }
    ~active_dc() { device_.ReleaseWinDC(); }
    active_dc(const active_dc&) = delete;
    active_dc& operator=(const active_dc&) = delete;

    operator HDC() const noexcept { return dc_; }

private:
    vDEVICE& device_;
    HDC dc_;
};

} // namespace klv
