#include "klv/filters/tiff/tiff_decoder.h"

#include "klv/core/object.h"
#include "klv/filters/tiff/tiff_huffman.h"
#include "klv/filters/tiff/tiff_lzw.h"
#include "klv/filters/tiff/tiff_packbits.h"

#include <algorithm>
#include <new>
#include <optional>

namespace klv {

class tiff_plane : public vOBJECT {
public:
    explicit tiff_plane(tiff_source& source)
        : cursor_(source)
    {
    }
    virtual ~tiff_plane() = default;

    /// Goes to a strip of that many rows.
    virtual oFILTER_STATUS begin_strip(std::uint32_t offset, std::uint32_t)
    {
        cursor_.seek(offset);
        return oFILTER_OK;
    }
    /// Decodes the next row of the strip, row_bytes long.
    virtual oFILTER_STATUS read_row(std::span<std::uint8_t> row) = 0;
    [[nodiscard]] std::uint32_t position() const { return cursor_.position(); }

protected:
    tiff_cursor cursor_;
};

namespace {

class raw_plane final : public tiff_plane {
public:
    using tiff_plane::tiff_plane;

    oFILTER_STATUS read_row(std::span<std::uint8_t> row) override
    {
        if (row.size() > tiff_cursor::longest_view)
            return cursor_.read(row) ? oFILTER_OK : oFILTER_READ_ERROR;
        const auto stored = cursor_.ahead(row.size());
        if (stored.size() < row.size())
            return oFILTER_READ_ERROR;
        std::ranges::copy(stored.first(row.size()), row.begin());
        cursor_.skip(row.size());
        return oFILTER_OK;
    }
};

class packbits_plane final : public tiff_plane {
public:
    using tiff_plane::tiff_plane;

    oFILTER_STATUS read_row(std::span<std::uint8_t> row) override { return read_packbits_row(cursor_, row); }
};

class huffman_plane final : public tiff_plane {
public:
    huffman_plane(tiff_source& source, const tiff_image& image)
        : tiff_plane(source)
        , bits_(cursor_)
        , width_(image.width)
        , black_is_zero_(image.photometric == tiff_black_is_zero)
    {
    }

    oFILTER_STATUS begin_strip(std::uint32_t offset, std::uint32_t rows) override
    {
        bits_ = tiff_bits(cursor_);
        return tiff_plane::begin_strip(offset, rows);
    }

    oFILTER_STATUS read_row(std::span<std::uint8_t> row) override
    {
        const oFILTER_STATUS status = read_huffman_row(bits_, width_, row);
        bits_.move_cursor();
        if (black_is_zero_)
            for (std::uint8_t& byte : row)
                byte = static_cast<std::uint8_t>(byte ^ 0xFF);
        return status;
    }

private:
    tiff_bits bits_;
    std::uint32_t width_;
    bool black_is_zero_;
};

class lzw_plane final : public tiff_plane {
public:
    lzw_plane(tiff_source& source, const tiff_image& image, std::uint32_t plane)
        : tiff_plane(source)
        , row_bytes_(static_cast<std::uint32_t>(image.row_bytes(plane)))
        , decoder_(row_bytes_ * image.rows_per_strip)
    {
        if (image.predictor == tiff_differences)
            predictor_.emplace(image, plane);
    }

    /// Whole strips are decoded; the rows of a damaged one are there up to the damage.
    oFILTER_STATUS begin_strip(std::uint32_t offset, std::uint32_t rows) override
    {
        cursor_.seek(offset);
        next_ = 0;
        status_ = decoder_.decode_strip(cursor_, row_bytes_ * rows);
        return oFILTER_OK;
    }

    oFILTER_STATUS read_row(std::span<std::uint8_t> row) override
    {
        std::ranges::copy(decoder_.strip().subspan(next_, row_bytes_), row.begin());
        next_ += row_bytes_;
        if (predictor_)
            predictor_->undo(row);
        return next_ <= decoder_.decoded() ? oFILTER_OK : status_;
    }

private:
    std::uint32_t row_bytes_;
    tiff_lzw_decoder decoder_;
    std::optional<tiff_predictor> predictor_;
    std::uint32_t next_ = 0;
    oFILTER_STATUS status_ = oFILTER_OK;
};

std::unique_ptr<tiff_plane> make_plane(const tiff_image& image, tiff_source& source, std::uint32_t plane)
{
    std::unique_ptr<tiff_plane> made;
    switch (image.compression) {
    case tiff_packbits:
        made.reset(new packbits_plane(source));
        break;
    case tiff_modified_huffman:
        made.reset(new huffman_plane(source, image));
        break;
    case tiff_lzw:
        made.reset(new lzw_plane(source, image, plane));
        break;
    default:
        made.reset(new raw_plane(source));
    }
    if (!made)
        throw std::bad_alloc();
    return made;
}

} // namespace

tiff_decoder::tiff_decoder(const tiff_image& image, tiff_source& source)
    : image_(image)
    , unpacker_(image)
    , plane_count_(image.planar_rgb() ? tiff_most_planes : 1)
{
    for (std::uint32_t plane = 0; plane < plane_count_; ++plane)
        planes_[plane] = make_plane(image, source, plane);
    if (!unpacker_.stored_as_bitmap())
        for (std::uint32_t plane = 0; plane < plane_count_; ++plane)
            rows_[plane].resize(static_cast<std::size_t>(image.row_bytes(plane)));
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
    if (unpacker_.stored_as_bitmap()) {
        const auto row_bytes = static_cast<std::size_t>(image_.row_bytes(0));
        const auto status = planes_[0]->read_row(line.first(row_bytes));
        unpacker_.clear_rest(line);
        return status;
    }
    tiff_plane_rows rows;
    for (std::uint32_t plane = 0; plane < plane_count_; ++plane) {
        if (const auto status = planes_[plane]->read_row(rows_[plane]); status != oFILTER_OK)
            return status;
        rows[plane] = rows_[plane];
    }
    unpacker_.unpack(rows, line);
    return oFILTER_OK;
}

} // namespace klv
