#pragma once

#include "klv/base/byte_reader.h"
#include "klv/bitmaps/memory_dib.h"
#include "klv/bitmaps/stream_dib.h"
#include "klv/filters/windows/canvas_objects.h"

#include <cstdint>
#include <memory>
#include <span>

/// Bitmaps as the records of both Windows formats hold them: header, colour table, rows.
namespace klv {

/// \param any_header also takes the other published headers; else only the 40-byte one.
/// \param palette the selected palette or null. It gives the colours of a bitmap whose table holds indices
/// into it (colour usage 1), and of one that has no room for a table. \return null when there is no bitmap
/// that can be read.
std::unique_ptr<oMEMDIB> read_packed_bitmap(std::span<const std::uint8_t> packed, bool any_header,
    const canvas_colour_table& palette = nullptr, std::uint16_t colour_usage = 0);

/// The pattern of a brush. Null when there is none that can be read.
std::unique_ptr<oSTREAMDIB> read_pattern_bitmap(byte_reader& in, std::uint16_t colour_usage);

} // namespace klv
