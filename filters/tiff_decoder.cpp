#include "filters/tiff_decoder.h"

#include <algorithm>
#include <new>
#include <optional>

#include "core/object.h"
#include "filters/tiff_huffman.h"
#include "filters/tiff_lzw.h"
#include "filters/tiff_packbits.h"

namespace klv {

class tiff_plane : public vOBJECT {
public:
    tiff_plane(tiff_source& source, std::size_t row_bytes)
        : cursor_(source)
        , row_bytes_(row_bytes)
    {
    }
    virtual ~tiff_plane() = default;

    /// Goes to a strip of that many rows.
    virtual oFILTER_STATUS begin_strip(std::uint32_t offset, std::uint32_t)
    {
        cursor_.seek(offset);
        return oFILTER_OK;
    }
    /// Decodes the next row of the strip; its bytes stay until the next call.
    virtual oFILTER_STATUS next_row(std::span<const std::uint8_t>& row) = 0;
    [[nodiscard]] std::uint32_t position() const { return cursor_.position(); }

protected:
    tiff_cursor cursor_;
    std::size_t row_bytes_;
};

namespace {

class raw_plane final : public tiff_plane {
public:
    using tiff_plane::tiff_plane;

    oFILTER_STATUS next_row(std::span<const std::uint8_t>& row) override
    {
        if (const auto there = cursor_.ahead(std::min(row_bytes_, tiff_cursor::longest_view));
            there.size() >= row_bytes_) {
            row = there.first(row_bytes_);
            cursor_.skip(row_bytes_);
            return oFILTER_OK;
        }
        buffer_.resize(row_bytes_);
        row = buffer_;
        return cursor_.read(buffer_) ? oFILTER_OK : oFILTER_READ_ERROR;
    }

private:
    tiff_buffer buffer_; ///< for rows longer than the cursor's view of a file
};

class packbits_plane final : public tiff_plane {
public:
    packbits_plane(tiff_source& source, std::size_t row_bytes)
        : tiff_plane(source, row_bytes)
        , row_(row_bytes)
    {
    }

    oFILTER_STATUS next_row(std::span<const std::uint8_t>& row) override
    {
        row = row_;
        return ReadPackedBits(cursor_, row_);
    }

private:
    tiff_buffer row_;
};

class huffman_plane final : public tiff_plane {
public:
    huffman_plane(tiff_source& source, const TIFFIMAGE& image, std::size_t row_bytes)
        : tiff_plane(source, row_bytes)
        , bits_(cursor_)
        , width_(image.width)
        , black_is_zero_(image.photometric == tiff_black_is_zero)
        , row_(row_bytes)
    {
    }

    oFILTER_STATUS begin_strip(std::uint32_t offset, std::uint32_t rows) override
    {
        bits_ = tiff_bits(cursor_);
        return tiff_plane::begin_strip(offset, rows);
    }

    oFILTER_STATUS next_row(std::span<const std::uint8_t>& row) override
    {
        row = row_;
        const oFILTER_STATUS status = ReadHuffBits(bits_, width_, row_);
        if (black_is_zero_)
            for (std::uint8_t& byte : row_)
                byte = static_cast<std::uint8_t>(byte ^ 0xFF);
        return status;
    }

private:
    tiff_bits bits_;
    std::uint32_t width_;
    bool black_is_zero_;
    tiff_buffer row_;
};

class lzw_plane final : public tiff_plane {
public:
    lzw_plane(tiff_source& source, const TIFFIMAGE& image, std::uint32_t plane, std::size_t row_bytes)
        : tiff_plane(source, row_bytes)
        , decoder_(static_cast<std::uint32_t>(row_bytes * image.rows_per_strip))
    {
        if (image.predictor == 2)
            predictor_.emplace(image, plane);
    }

    /// Whole strips are decoded; the rows of a damaged one are there up to the damage.
    oFILTER_STATUS begin_strip(std::uint32_t offset, std::uint32_t rows) override
    {
        cursor_.seek(offset);
        next_ = 0;
        status_ = decoder_.ParseLZW(cursor_, static_cast<std::uint32_t>(row_bytes_ * rows));
        return oFILTER_OK;
    }

    oFILTER_STATUS next_row(std::span<const std::uint8_t>& row) override
    {
        const auto stored = decoder_.strip().subspan(next_, row_bytes_);
        next_ += row_bytes_;
        if (predictor_)
            predictor_->UndoHorizPredictor(stored);
        row = stored;
        return next_ <= decoder_.decoded() ? oFILTER_OK : status_;
    }

private:
    tiff_lzw_decoder decoder_;
    std::optional<tiff_predictor> predictor_;
    std::size_t next_ = 0;
    oFILTER_STATUS status_ = oFILTER_OK;
};

std::unique_ptr<tiff_plane> make_plane(const TIFFIMAGE& image, tiff_source& source, std::uint32_t plane)
{
    const auto row_bytes = static_cast<std::size_t>(image.row_bytes(plane));
    std::unique_ptr<tiff_plane> made;
    switch (image.compression) {
    case tiff_packbits:
        made.reset(new packbits_plane(source, row_bytes));
        break;
    case tiff_modified_huffman:
        made.reset(new huffman_plane(source, image, row_bytes));
        break;
    case tiff_lzw:
        made.reset(new lzw_plane(source, image, plane, row_bytes));
        break;
    default:
        made.reset(new raw_plane(source, row_bytes));
    }
    if (!made)
        throw std::bad_alloc();
    return made;
}

} // namespace

tiff_decoder::tiff_decoder(const TIFFIMAGE& image, tiff_source& source)
    : image_(image)
    , unpacker_(image)
    , plane_count_(image.planar_rgb() ? tiff_most_planes : 1)
{
    for (std::uint32_t plane = 0; plane < plane_count_; ++plane)
        planes_[plane] = make_plane(image, source, plane);
}

tiff_decoder::~tiff_decoder() = default;

std::uint32_t tiff_decoder::position() const { return planes_[plane_count_ - 1]->position(); }

oFILTER_STATUS tiff_decoder::begin_strip()
{
    const std::uint32_t strip = row_ / image_.rows_per_strip;
    const std::uint32_t rows = std::min(image_.rows_per_strip, image_.length - row_);
    for (std::uint32_t plane = 0; plane < plane_count_; ++plane) {
        const std::uint64_t index = std::uint64_t{plane} * image_.strips_per_plane + strip;
        if (index >= image_.strip_offsets.size())
            return oFILTER_BAD_DATA;
        const auto status = planes_[plane]->begin_strip(image_.strip_offsets[index], rows);
        if (status != oFILTER_OK)
            return status;
    }
    return oFILTER_OK;
}

oFILTER_STATUS tiff_decoder::next_line(std::span<std::uint8_t> line)
{
    if (row_ % image_.rows_per_strip == 0)
        if (const auto status = begin_strip(); status != oFILTER_OK)
            return status;
    ++row_;
    tiff_plane_rows rows;
    for (std::uint32_t plane = 0; plane < plane_count_; ++plane)
        if (const auto status = planes_[plane]->next_row(rows[plane]); status != oFILTER_OK)
            return status;
    unpacker_.unpack(rows, line);
    return oFILTER_OK;
}

} // namespace klv
