#pragma once

#include "klv/base/byte_reader.h"
#include "klv/base/types.h"
#include "klv/bitmaps/memory_dib.h"
#include "klv/bitmaps/stream_dib.h"
#include "klv/core/rect.h"
#include "klv/filters/wmf/wmf_objects.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

namespace klv {

class vMETAFILE;
class wmf_mapping;

/// A packed bitmap of a record: header, colour table, rows.
/// \param any_header also takes the other published headers; else only the 40-byte one.
/// \param palette the selected palette or null. It gives the colours of a bitmap whose table holds indices
/// into it (colour usage 1), and of one that has no room for a table. \return null when there is no bitmap
/// that can be read.
std::unique_ptr<oMEMDIB> read_wmf_dib(std::span<const std::uint8_t> packed, bool any_header,
    const wmf_colour_table& palette = nullptr, std::uint16_t colour_usage = 0);

/// The pattern of a DIBCREATEPATTERNBRUSH record, after its style and colour usage. Null when it has none.
std::unique_ptr<oSTREAMDIB> read_wmf_pattern(byte_reader& in, std::uint16_t colour_usage);

/// A device-dependent bitmap of a record. Its single-bit form takes the text and background colour.
std::unique_ptr<oMEMDIB> read_wmf_bitmap16(byte_reader& in, COLORREF text_colour, COLORREF background);

/// A transparent bitmap, put together from the opaque runs that the library's Windows metafile writer cut it
/// into, between a start and an end comment.
class wmf_transparent_bitmap {
public:
    /// Takes a start comment; false for any other.
    bool start(std::span<const std::uint8_t> comment);
    /// True between the comments: bitmaps are pieces.
    bool collecting() const { return bitmap_ != nullptr; }
    void add_piece(const oMEMDIB& piece, std::int32_t x, std::int32_t y, std::int32_t height);
    /// Takes an end comment and draws what was collected; false for any other.
    bool end(std::span<const std::uint8_t> comment, vMETAFILE& picture, const wmf_mapping& mapping);

private:
    void fill_with_transparent_colour(const oMEMDIB& piece);

    std::uint32_t colour_ = 0;
    std::int32_t threshold_ = 0;
    vRECT source_;
    vRECT destination_;
    bool first_piece_ = false;
    std::unique_ptr<oMEMDIB> bitmap_;
};

} // namespace klv
