#pragma once

#include "klv/bitmaps/memory_dib.h"
#include "klv/core/rect.h"

#include <cstdint>
#include <memory>
#include <span>

namespace klv {

class canvas_mapping;
class vMETAFILE;

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
    bool end(std::span<const std::uint8_t> comment, vMETAFILE& picture, const canvas_mapping& mapping);

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
