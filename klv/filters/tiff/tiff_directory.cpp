#include "klv/filters/tiff/tiff_directory.h"

#include "klv/base/byte_reader.h"

#include <algorithm>
#include <optional>

namespace klv {

namespace {

constexpr std::size_t header_size = 8;
constexpr std::size_t entry_size = 12;
constexpr std::size_t entry_value_offset = 8;
constexpr std::size_t bytes_in_entry = 4; ///< values of up to so many bytes stand in the entry itself
constexpr std::uint16_t little_endian_mark = 0x4949;

constexpr std::uint32_t most_colour_map_values = 3 * 256;
enum tag : std::uint16_t {
    tag_width = 256,
    tag_length = 257,
    tag_bits_per_sample = 258,
    tag_compression = 259,
    tag_photometric = 262,
    tag_fill_order = 266,
    tag_strip_offsets = 273,
    tag_orientation = 274,
    tag_samples_per_pixel = 277,
    tag_rows_per_strip = 278,
    tag_x_resolution = 282,
    tag_y_resolution = 283,
    tag_planar_configuration = 284,
    tag_grey_response_unit = 290,
    tag_grey_response_curve = 291,
    tag_resolution_unit = 296,
    tag_predictor = 317,
    tag_colour_map = 320,
    tag_extra_samples = 338,
    tag_sample_format = 339,
};

enum field_type : std::uint16_t {
    type_byte = 1,
    type_short = 3,
    type_long = 4,
    type_rational = 5,
    type_sbyte = 6,
    type_undefined = 7,
    type_sshort = 8,
    type_slong = 9,
    type_srational = 10,
};

/// Bytes of a value; 0 for types of which no number is taken.
std::size_t size_of_type(std::uint16_t type)
{
    switch (type) {
    case type_byte:
    case type_sbyte:
    case type_undefined:
        return 1;
    case type_short:
    case type_sshort:
        return 2;
    case type_long:
    case type_slong:
        return 4;
    case type_rational:
    case type_srational:
        return 8;
    default:
        return 0;
    }
}

/// Numbers in the file's byte order.
class number_reader {
public:
    number_reader(std::span<const std::uint8_t> bytes, bool little_endian)
        : in_(bytes)
        , little_endian_(little_endian)
    {
    }
    std::uint8_t u8() { return in_.u8(); }
    std::uint16_t u16() { return little_endian_ ? in_.u16le() : in_.u16be(); }
    std::uint32_t u32() { return little_endian_ ? in_.u32le() : in_.u32be(); }
    std::int16_t i16() { return little_endian_ ? in_.i16le() : in_.i16be(); }
    std::int32_t i32() { return little_endian_ ? in_.i32le() : in_.i32be(); }
    void seek(std::size_t offset) { in_.seek(offset); }

private:
    byte_reader in_;
    bool little_endian_;
};

struct tiff_entry {
    std::uint16_t tag = 0;
    std::uint16_t type = 0;
    std::uint32_t count = 0;
    std::uint32_t position = 0; ///< of the first value in the file
};

template <typename Number> std::optional<std::uint32_t> not_negative(Number value)
{
    if (value < 0)
        return std::nullopt;
    return static_cast<std::uint32_t>(value);
}

std::optional<tiff_rational> read_rational(number_reader& in)
{
    const tiff_rational value{in.u32(), in.u32()};
    return value.denominator != 0 ? std::optional(value) : std::nullopt;
}

std::optional<tiff_rational> read_signed_rational(number_reader& in)
{
    const std::int32_t numerator = in.i32(), denominator = in.i32();
    if (numerator <= 0 || denominator <= 0)
        return std::nullopt;
    return tiff_rational{static_cast<std::uint32_t>(numerator), static_cast<std::uint32_t>(denominator)};
}

std::optional<std::uint32_t> whole_part(const std::optional<tiff_rational>& value)
{
    return value ? std::optional(value->numerator / value->denominator) : std::nullopt;
}

/// The next value of a type as a number without sign; nothing for a negative one.
std::optional<std::uint32_t> read_value(number_reader& in, std::uint16_t type)
{
    switch (type) {
    case type_byte:
    case type_undefined:
        return in.u8();
    case type_short:
        return in.u16();
    case type_long:
        return in.u32();
    case type_rational:
        return whole_part(read_rational(in));
    case type_sbyte:
        return not_negative(static_cast<std::int8_t>(in.u8()));
    case type_sshort:
        return not_negative(in.i16());
    case type_slong:
        return not_negative(in.i32());
    case type_srational:
        return whole_part(read_signed_rational(in));
    default:
        return std::nullopt;
    }
}

/// Reads a directory into a tiff_image. Each tag is read once, however often it stands there: the last
/// counts.
class directory_reader {
public:
    directory_reader(tiff_source& source, tiff_image& image)
        : source_(source)
        , image_(image)
    {
    }

    oFILTER_STATUS read()
    {
        std::uint32_t directory = 0;
        if (const auto status = read_header(directory); status != oFILTER_OK)
            return status;
        if (const auto status = read_entries(directory); status != oFILTER_OK)
            return status;
        take_values();
        return status_;
    }

private:
    oFILTER_STATUS read_header(std::uint32_t& directory)
    {
        tiff_buffer buffer;
        const auto bytes = source_.bytes(0, header_size, buffer);
        if (bytes.empty())
            return oFILTER_READ_ERROR;
        little_endian_ = byte_reader(bytes).u16le() == little_endian_mark;
        number_reader in(bytes, little_endian_);
        in.seek(4); // mark and version
        directory = in.u32();
        return oFILTER_OK;
    }

    oFILTER_STATUS read_entries(std::uint32_t directory)
    {
        tiff_buffer buffer;
        const auto count_bytes = source_.bytes(directory, 2, buffer);
        if (count_bytes.empty())
            return oFILTER_READ_ERROR;
        const std::uint16_t count = number_reader(count_bytes, little_endian_).u16();
        if (count == 0)
            return oFILTER_BAD_DATA;
        const std::uint32_t first = directory + 2;
        const auto bytes = source_.bytes(first, count * entry_size, buffer);
        if (bytes.empty())
            return oFILTER_READ_ERROR;
        for (std::uint32_t i = 0; i < count; ++i)
            read_entry(bytes.subspan(i * entry_size, entry_size), first + i * entry_size);
        return oFILTER_OK;
    }

    void read_entry(std::span<const std::uint8_t> bytes, std::size_t position)
    {
        number_reader in(bytes, little_endian_);
        tiff_entry entry;
        entry.tag = in.u16();
        entry.type = in.u16();
        entry.count = in.u32();
        const std::size_t value_size = size_of_type(entry.type);
        if (entry.count == 0 || value_size == 0)
            return;
        entry.position = entry.count <= bytes_in_entry / value_size
            ? static_cast<std::uint32_t>(position + entry_value_offset)
            : in.u32();
        const auto known = std::ranges::find(tags, entry.tag);
        if (known != tags.end())
            entries_[static_cast<std::size_t>(known - tags.begin())] = entry;
    }

    void take_values()
    {
        setUWORD(tag_photometric, image_.photometric);
        setUWORD(tag_compression, image_.compression);
        setUWORD(tag_planar_configuration, image_.planar_configuration);
        setULONG(tag_length, image_.length);
        setULONG(tag_width, image_.width);
        setUWORD(tag_predictor, image_.predictor);
        setPALETTE(tag_colour_map);
        set_numbers(tag_grey_response_curve, image_.grey_response);
        setUWORD(tag_grey_response_unit, image_.grey_response_unit);
        setUWORD(tag_resolution_unit, image_.resolution_unit);
        setRATIONAL(tag_x_resolution, image_.x_resolution);
        setRATIONAL(tag_y_resolution, image_.y_resolution);
        setULONG(tag_rows_per_strip, image_.rows_per_strip);
        set_numbers(tag_strip_offsets, image_.strip_offsets);
        set_numbers(tag_bits_per_sample, image_.bits_per_sample);
        setUWORD(tag_samples_per_pixel, image_.samples_per_pixel);
        if (const tiff_entry* const extra = find(tag_extra_samples))
            image_.extra_sample_count = extra->count;
        setUWORD(tag_extra_samples, image_.first_extra_sample);
        setUWORD(tag_fill_order, image_.fill_order);
        setUWORD(tag_orientation, image_.orientation);
        setUWORD(tag_sample_format, image_.sample_format);
    }

    const tiff_entry* find(tag wanted) const
    {
        const auto at = static_cast<std::size_t>(std::ranges::find(tags, wanted) - tags.begin());
        return entries_[at].count != 0 ? &entries_[at] : nullptr;
    }

    /// The first count values of an entry; empty, and a read error, when they are not in the file.
    std::span<const std::uint8_t> value_bytes(
        const tiff_entry& entry, std::uint32_t count, tiff_buffer& buffer)
    {
        const std::uint64_t size = std::uint64_t{count} * size_of_type(entry.type);
        const auto bytes = size <= source_.size()
            ? source_.bytes(entry.position, static_cast<std::size_t>(size), buffer)
            : std::span<const std::uint8_t>();
        if (bytes.empty())
            status_ = oFILTER_READ_ERROR;
        return bytes;
    }

    void setULONG(tag wanted, std::uint32_t& value)
    {
        const tiff_entry* const entry = find(wanted);
        tiff_buffer buffer;
        const auto bytes = entry ? value_bytes(*entry, 1, buffer) : std::span<const std::uint8_t>();
        if (bytes.empty())
            return;
        number_reader in(bytes, little_endian_);
        value = read_value(in, entry->type).value_or(value);
    }

    void setUWORD(tag wanted, std::uint16_t& value)
    {
        std::uint32_t wide = value;
        setULONG(wanted, wide);
        value = static_cast<std::uint16_t>(std::min<std::uint32_t>(wide, tiff_image::missing_word));
    }

    void setRATIONAL(tag wanted, tiff_rational& value)
    {
        const tiff_entry* const entry = find(wanted);
        if (!entry)
            return;
        if (entry->type != type_rational && entry->type != type_srational) {
            std::uint32_t whole = 0;
            setULONG(wanted, whole);
            value = {whole, 1};
            return;
        }
        tiff_buffer buffer;
        const auto bytes = value_bytes(*entry, 1, buffer);
        if (bytes.empty())
            return;
        number_reader in(bytes, little_endian_);
        value = (entry->type == type_rational ? read_rational(in) : read_signed_rational(in)).value_or(value);
    }

    void set_numbers(tag wanted, tiff_numbers& values)
    {
        const tiff_entry* const entry = find(wanted);
        tiff_buffer buffer;
        const auto bytes
            = entry ? value_bytes(*entry, entry->count, buffer) : std::span<const std::uint8_t>();
        if (bytes.empty())
            return;
        number_reader in(bytes, little_endian_);
        values.resize(entry->count);
        for (std::uint32_t& value : values)
            value = read_value(in, entry->type).value_or(0);
    }

    /// All red values, then green, then blue; 16-bit values count by their high byte.
    void setPALETTE(tag wanted)
    {
        const tiff_entry* const entry = find(wanted);
        if (!entry || size_of_type(entry->type) > 2)
            return;
        const std::uint32_t count = std::min(entry->count, most_colour_map_values) / 3;
        tiff_buffer buffer;
        const auto bytes
            = count != 0 ? value_bytes(*entry, 3 * count, buffer) : std::span<const std::uint8_t>();
        if (bytes.empty())
            return;
        number_reader in(bytes, little_endian_);
        const unsigned shift = size_of_type(entry->type) == 2 ? 8 : 0;
        for (std::uint8_t RGBQUAD::*const channel : {&RGBQUAD::rgbRed, &RGBQUAD::rgbGreen, &RGBQUAD::rgbBlue})
            for (std::uint32_t i = 0; i < count; ++i)
                image_.colour_map[i].*channel
                    = static_cast<std::uint8_t>((shift ? in.u16() : in.u8()) >> shift);
        image_.colour_map_entries = static_cast<std::uint16_t>(count);
    }

    static constexpr std::array<std::uint16_t, 20> tags{tag_width, tag_length, tag_bits_per_sample,
        tag_compression, tag_photometric, tag_fill_order, tag_strip_offsets, tag_samples_per_pixel,
        tag_rows_per_strip, tag_x_resolution, tag_y_resolution, tag_planar_configuration,
        tag_grey_response_unit, tag_grey_response_curve, tag_resolution_unit, tag_predictor, tag_colour_map,
        tag_extra_samples, tag_sample_format, tag_orientation};

    tiff_source& source_;
    tiff_image& image_;
    bool little_endian_ = true;
    std::array<tiff_entry, tags.size()> entries_{};
    oFILTER_STATUS status_ = oFILTER_OK;
};

} // namespace

oFILTER_STATUS read_directory(tiff_source& source, tiff_image& image)
{
    return directory_reader(source, image).read();
}

} // namespace klv
