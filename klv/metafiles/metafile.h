#pragma once

#include "klv/core/point.h"
#include "klv/core/rect.h"
#include "klv/devices/device.h"
#include "klv/streams/stream.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

namespace klv {

class IDistort;
class oDIB;
class oDIBCONTEXT;
class oMFCONTEXT;
class oPROGRESS;
class vCHAR;
class vCOLLECTION;
class vCOLOUR;
class vSTRING;

/// How playback draws the records of text on a line.
enum class vTEXTREPLAY : int {
    as_bitmap = 0, ///< as a bitmap of the text, black on white, centred on its start point's height
    as_text = 1, ///< as text, by the device, in the current fill colour, from the left end of its baseline
};

/// The recorded picture: a device that appends every drawing call as a record to a byte stream. The stream is
/// the picture. It can be written out, read back, and replayed, scaled and distorted, onto any device.
///
/// The stream holds a header of 55 bytes and then records, each a 16-bit code and its payload (see
/// metafile_records.h). A stream that holds a Windows metafile instead makes the picture native.
///
/// Coordinates are the picture's own logical units and are recorded as they are given. The physical extents
/// and the units of the device are 2540 to the inch. A picture without a stream only counts and measures.
class vMETAFILE : public vDEVICE {
public:
    /// Ends of an extent that nothing has set yet.
    static constexpr std::int32_t unset_extent = -2'000'000'000;
    /// What the stream of a recorded picture starts with.
    static constexpr std::string_view signature = "ZYNVMMETA";
    /// Length of the stream's header, bytes: the first record starts here.
    static constexpr std::uint32_t header_size = 55;
    /// Where the header has the 16-bit version of the format.
    static constexpr std::uint32_t version_offset = 9;
    /// Device units in an inch.
    static constexpr int units_per_inch = 2540;

    /// An empty picture on a memory stream of its own. When memory is out there is no stream.
    vMETAFILE() noexcept;
    /// A picture on the caller's stream, which must outlive it: a new one when the stream is empty, else the
    /// one that the stream holds.
    explicit vMETAFILE(vSTREAM& stream) noexcept;
    vMETAFILE(const vMETAFILE&) = delete;
    /// Takes over every field. Both pictures then share one stream; it lives until the last of them goes.
    vMETAFILE& operator=(vMETAFILE& other) noexcept;
    ~vMETAFILE() override;

    /// Takes `stream` as the record stream: writes a header when it is empty, reads the one it has otherwise.
    void Constructor(vSTREAM& stream) noexcept;

    /// Copies the whole picture to the position of `out`.
    vMETAFILE& operator>>(vSTREAM& out) noexcept;
    /// Replaces the picture by the one that `in` holds from its position to its end.
    vMETAFILE& operator<<(vSTREAM& in) noexcept;

    // The device's operations. Attributes and figures are recorded.
    vDEV_TYPE DeviceType() const noexcept override { return vDEV_METAFILE; }
    HDC GetWinDC() noexcept override { return nullptr; }
    int ReleaseWinDC() noexcept override { return 0; }
    void LogUnitsPerHorzInch(const int& units) noexcept override;
    int LogUnitsPerHorzInch() const noexcept override;
    void LogUnitsPerVertInch(const int& units) noexcept override;
    int LogUnitsPerVertInch() const noexcept override;
    int DevUnitsPerHorzInch() const noexcept override { return units_per_inch; }
    int DevUnitsPerVertInch() const noexcept override { return units_per_inch; }
    void PushState() noexcept override;
    void PopState() noexcept override;
    using vDEVICE::LineSpec;
    void LineSpec(const vLINESPEC& spec) noexcept override;
    void PushLineSpec() noexcept override;
    void PopLineSpec() noexcept override;
    using vDEVICE::FillSpec;
    void FillSpec(const vFILLSPEC& spec) noexcept override;
    void PushFillSpec() noexcept override;
    void PopFillSpec() noexcept override;
    using vDEVICE::FontSpec;
    /// Records the font; the device's own current font stays.
    void FontSpec(const vFONTSPEC& spec) noexcept override;
    void PushFontSpec() noexcept override;
    void PopFontSpec() noexcept override;
    void ClearClipArea() noexcept override { }
    void PushClipArea() noexcept override;
    void PopClipArea() noexcept override;
    int ClipAreaIntersect(const vPOINT&) noexcept override { return 1; }
    int ClipAreaIntersect(const vRECT&) noexcept override { return 1; }
    void TextTransparency(int transparent) noexcept override;
    using vDEVICE::DrawLine;
    void DrawLine(const vPOINT& from, const vPOINT& to) noexcept override;
    /// Records a line through all points; one of more than 65535 becomes several that meet.
    void DrawLine(std::span<const vPOINT> points) noexcept override;
    void DrawLine(int count, vCOLLECTION& points) noexcept override;
    void DrawRect(const vRECT& rect) noexcept override;
    void DrawRoundRect(const vRECT& rect, const vSIZE& corner) noexcept override;
    void DrawEllipse(const vRECT& rect) noexcept override;
    void DrawArc(const vRECT& rect, const vPOINT& start, const vPOINT& end) noexcept override;
    void DrawPie(const vRECT& rect, const vPOINT& start, const vPOINT& end) noexcept override;
    void DrawChord(const vRECT& rect, const vPOINT& start, const vPOINT& end) noexcept override;
    void DrawShape(const vSHAPE& shape) noexcept override;
    /// Records the text; rotation, pivot and angle have no place in a picture. \return 1
    int DrawTextA(const vSTRING& text, const vRECT& rect, vTEXTALIGN align, int rotated, const vPOINT& pivot,
        double angle) noexcept override;
    /// Records the text without its advances. \return 1
    int DrawTextOnLine(
        const vSTRING& text, const vPOINT& start, const short* advances, int rotated) noexcept override;
    using vDEVICE::DrawDIB;
    /// Records the bitmap that CreateExportDIB answers, in rect or else in the destination of the context. A
    /// picture without a stream records nothing. small limits the bitmap's size.
    void DrawDIB(const oDIB& bitmap, oDIBCONTEXT& context, vRECT* rect, int small) noexcept override;
    /// The device position of the last point of the last shape that playback drew.
    void LastPoint(POINT& point) noexcept override;

    // The picture's own operations, in slot order.
    using vDEVICE::ClipArea;
    virtual void ClipArea(const vSHAPE& shape) noexcept;
    /// Records nothing: a picture is clipped by shapes only.
    virtual void ClipArea(const vRECT& rect) noexcept;
    /// Closes the picture: writes the end record and puts the extents into the header.
    virtual void EndMetaFile() noexcept;
    /// Sets both extents and, from them and the physical extents, the units per inch; puts them into the
    /// header.
    virtual void LogicalExtents(int x0, int x1, int y0, int y1) noexcept;
    /// Sets the size on paper, in 1/2540 inch.
    virtual void PhysicalExtents(int width, int height) noexcept;
    virtual void DrawTextA(const vSTRING& text, const vRECT& rect, vTEXTALIGN align) noexcept;
    /// start is the left end of the text's baseline. The advances are not recorded.
    virtual void DrawTextOnLine(const vSTRING& text, const vPOINT& start, const short* advances) noexcept;
    /// Counts, and records nothing.
    virtual void DrawChar(const vCHAR& character, const vPOINT& point, std::uint16_t advance) noexcept;
    using vDEVICE::DrawChar;
    /// Replays the picture onto a device, mapped from its extents into the destination of the context. With
    /// clip, the parts of bitmaps are mapped into clip instead. A native picture draws nothing.
    virtual void Draw(vDEVICE& device, oMFCONTEXT& context, const vRECT* clip) noexcept;
    /// \return 1; 0 when the checksum of a Windows metafile's placeable header is wrong.
    virtual int Status() const noexcept { return status_; }

    /// Replays the picture into rect. A negative width or height mirrors; angle turns, in degrees; colour is
    /// an override or null; source is a part of the picture or null. The point is not used.
    void Draw(vDEVICE& device, const vRECT& rect, vCOLOUR* colour, const vPOINT& point, const double& angle,
        int flag, vRECT* source, const vRECT* clip) noexcept;
    /// Replays the picture into another picture, mapped into rect in the other's units. rect must have a
    /// width and a height and the picture extents, or nothing happens.
    void InsertInto(vMETAFILE& target, const vRECT& rect) noexcept;

    /// Records that playback pushes or pops the device's clip area; the picture itself has none. A reader of
    /// a foreign format brackets with them the figures that a clip area holds for.
    void RecordPushClipArea() noexcept;
    void RecordPopClipArea() noexcept;

    /// How this picture's text on a line is replayed; as_bitmap at first. A copy is replayed as its original.
    void TextReplay(vTEXTREPLAY how) noexcept { text_replay_ = how; }
    vTEXTREPLAY TextReplay() const noexcept { return text_replay_; }

    int LogicalWidth() const noexcept;
    int LogicalHeight() const noexcept;
    /// The smaller end of the X extent.
    int LogicalXOffset() const noexcept;
    /// The smaller end of the Y extent.
    int LogicalYOffset() const noexcept;
    int PhysicalWidth() const noexcept { return physical_width_; }
    int PhysicalHeight() const noexcept { return physical_height_; }
    /// Records made since this object took its stream; 0 after reading a picture that was never counted.
    std::uint32_t GetNoOfRecords() const noexcept { return record_count_; }
    /// \return 1 when the stream holds a Windows metafile.
    int Native() const noexcept { return native_; }
    /// Size of the record stream, bytes.
    std::uint32_t Length() const noexcept;

    /// Reports the playback to progress, which is not owned.
    void SetProgressInd(oPROGRESS* progress) noexcept { progress_ = progress; }
    /// \return what SetProgressInd was given, and forgets it.
    oPROGRESS* RemoveProgressInd() noexcept;

protected:
    /// The record stream; null when there is none.
    vSTREAM* record_stream() const noexcept { return stream_; }
    /// Widens the extents by a point.
    void UpdateExtents(int x, int y) noexcept;
    void count_record() noexcept { ++record_count_; }

    /// The bitmap to store for a bitmap drawn with this context: the given one, or a new one, which the
    /// caller deletes, when the context turns, cuts, flips or colours it. small limits its longer side to 200
    /// pixels. \return the given one, too, when memory is out.
    const oDIB* CreateExportDIB(const oDIB& bitmap, const oDIBCONTEXT& context, int small) noexcept;

private:
    friend class record_cursor;
    friend class record_player;

    void draw_once(vDEVICE& device, const oMFCONTEXT& context, const vRECT& destination, const vRECT& clip,
        const IDistort* distort) noexcept;
    bool draw_tiled(vDEVICE& device, const oMFCONTEXT& context, const vRECT* clip) noexcept;
    void write_new_header();
    void read_header();
    void read_native_header();
    void derive_units_per_inch() noexcept;
    void update_extents(const vRECT& rect) noexcept;
    /// Counts and writes a record of the fields that its kind's static write takes, or of the kind itself.
    template <class Record, class... Fields> void append(const Fields&... fields) noexcept;
    template <class Record> void append_whole(const Record& what) noexcept;

    std::int32_t status_ = 1;
    std::shared_ptr<vSTREAM> owned_stream_; // null: the stream is the caller's
    vSTREAM* stream_ = nullptr;
    oPROGRESS* progress_ = nullptr;
    vTEXTREPLAY text_replay_ = vTEXTREPLAY::as_bitmap;
    std::int32_t x0_ = unset_extent;
    std::int32_t x1_ = unset_extent;
    std::int32_t y0_ = unset_extent;
    std::int32_t y1_ = unset_extent;
    std::int32_t physical_width_ = 0;
    std::int32_t physical_height_ = 0;
    std::uint32_t record_count_ = 0;
    int native_ = 0;
    vPOINT last_point_;
};

} // namespace klv
