#include "klv/base/byte_reader.h"
#include "klv/core/integer_math.h"
#include "klv/formats/wmf_records.h"
#include "klv/metafiles/detail/record_stream.h"
#include "klv/metafiles/metafile.h"

#include <array>
#include <cstring>
#include <span>
#include <string_view>

namespace klv {

namespace {

// The header of a recorded picture: signature, version, units per inch, extents (X, then Y), two reserved
// values, physical extents, number of records.
constexpr std::uint16_t current_version = 48;
constexpr std::uint32_t units_offset = 11;
constexpr std::uint32_t extents_offset = 19;
constexpr std::uint32_t physical_offset = 43;
static_assert(vMETAFILE::signature.size() == vMETAFILE::version_offset);

// A page of 210 by 297 mm in thousandths of a millimetre; every new picture starts with it.
constexpr std::int32_t default_physical_width = 210'000;
constexpr std::int32_t default_physical_height = 297'000;

// What a Windows metafile that says nothing about its size is taken for.
constexpr std::int32_t native_extent = 1000;
constexpr int native_units_per_inch = 576;

std::uint16_t checksum_of(std::span<const std::uint8_t> placeable)
{
    byte_reader in(placeable);
    std::uint16_t sum = 0;
    while (in.holds(1, 4)) // the last word is the stored sum
        sum = static_cast<std::uint16_t>(sum ^ in.u16le());
    return sum;
}

} // namespace

void vMETAFILE::Constructor(vSTREAM& stream) noexcept
{
    record_count_ = 0;
    status_ = 1;
    native_ = 0;
    progress_ = nullptr;
    stream_ = &stream;

    if (stream.Size() == 0) {
        write_new_header();
        return;
    }
    std::array<std::uint8_t, signature.size()> start{};
    stream.MoveFromStart(0);
    stream.ReadPlain(start.data(), start.size());
    if (std::memcmp(start.data(), signature.data(), signature.size()) == 0)
        read_header();
    else
        read_native_header();
}

void vMETAFILE::write_new_header()
{
    x0_ = x1_ = y0_ = y1_ = unset_extent;
    physical_width_ = default_physical_width;
    physical_height_ = default_physical_height;

    stream_->WritePlain(reinterpret_cast<const std::uint8_t*>(signature.data()), signature.size());
    record_writer out(*stream_);
    out.u16(current_version);
    out.i32(LogUnitsPerHorzInch());
    out.i32(LogUnitsPerVertInch());
    out.point(vPOINT(x0_, x1_));
    out.point(vPOINT(y0_, y1_));
    out.point(vPOINT(0, 0)); // reserved
    out.point(vPOINT(physical_width_, physical_height_));
    out.i32(0); // number of records
}

void vMETAFILE::read_header()
{
    record_reader in(*stream_, current_version);
    in.u16(); // version
    in.point(); // units per inch; they follow from the extents
    x0_ = in.i32();
    x1_ = in.i32();
    y0_ = in.i32();
    y1_ = in.i32();
    in.point(); // reserved
    physical_width_ = in.i32();
    physical_height_ = in.i32();
    record_count_ = static_cast<std::uint32_t>(in.i32());
    if (physical_width_ <= 0 || physical_height_ <= 0) {
        physical_width_ = default_physical_width;
        physical_height_ = default_physical_height;
    }
    derive_units_per_inch();
}

void vMETAFILE::read_native_header()
{
    native_ = 1;
    stream_->MoveFromStart(0);
    std::array<std::uint8_t, wmf_placeable_header_size> placeable_bytes{};
    if (stream_->ReadULong() == wmf_placeable_key) {
        stream_->MoveFromStart(0);
        stream_->ReadPlain(placeable_bytes.data(), placeable_bytes.size());
        if (stream_->Status() != vSTREAM_OK)
            return;
        wmf_placeable_header placeable;
        byte_reader in(placeable_bytes);
        wmf_read(in, placeable);
        if (checksum_of(placeable_bytes) != placeable.checksum) {
            status_ = 0;
            return;
        }
        x0_ = placeable.left;
        x1_ = placeable.right;
        y0_ = placeable.top;
        y1_ = placeable.bottom;
        LogUnitsPerHorzInch(placeable.units_per_inch);
        LogUnitsPerVertInch(placeable.units_per_inch);
    } else {
        x0_ = y0_ = 0;
        x1_ = y1_ = native_extent;
        LogUnitsPerHorzInch(native_units_per_inch);
        LogUnitsPerVertInch(native_units_per_inch);
        stream_->MoveFromStart(0);
    }

    std::array<std::uint8_t, wmf_header_size> bytes{};
    stream_->ReadPlain(bytes.data(), bytes.size());
    byte_reader in(bytes);
    wmf_header header;
    wmf_read(in, header);
    const std::int32_t rest = header.header_words * 2 - static_cast<std::int32_t>(wmf_header_size);
    if (rest > 0)
        stream_->MoveFromCur(rest);
}

void vMETAFILE::derive_units_per_inch() noexcept
{
    if (physical_width_ == 0 || physical_height_ == 0)
        return;
    if (LogicalWidth() != 0)
        LogUnitsPerHorzInch(MulDiv(LogicalWidth(), units_per_inch, physical_width_));
    if (LogicalHeight() != 0)
        LogUnitsPerVertInch(MulDiv(LogicalHeight(), units_per_inch, physical_height_));
}

void vMETAFILE::LogicalExtents(int x0, int x1, int y0, int y1) noexcept
{
    x0_ = x0;
    x1_ = x1;
    y0_ = y0;
    y1_ = y1;
    derive_units_per_inch();
    if (!stream_)
        return;
    const std::uint32_t position = stream_->CurrentPos();
    stream_->MoveFromStart(units_offset);
    {
        record_writer out(*stream_);
        out.i32(LogUnitsPerHorzInch());
        out.i32(LogUnitsPerVertInch());
        static_assert(extents_offset == units_offset + 8);
        out.point(vPOINT(x0_, x1_));
        out.point(vPOINT(y0_, y1_));
    }
    stream_->MoveFromStart(position);
}

void vMETAFILE::PhysicalExtents(int width, int height) noexcept
{
    physical_width_ = width;
    physical_height_ = height;
    if (stream_) {
        const std::uint32_t position = stream_->CurrentPos();
        stream_->MoveFromStart(physical_offset);
        record_writer(*stream_).point(vPOINT(width, height));
        stream_->MoveFromStart(position);
    }
    if (LogicalWidth() != 0 && LogicalHeight() != 0)
        derive_units_per_inch();
}

} // namespace klv
