#include "klv/filters/raster/eps_filter.h"

#include "klv/base/buffer.h"
#include "klv/base/byte_reader.h"
#include "klv/filters/tiff/tiff_filter.h"
#include "klv/streams/memory_stream.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

namespace klv {

namespace {

constexpr format_identity identity{
    .id = "EPS", .description_resource = 33012, .description = "Encapsulated Postscript"};

constexpr std::uint32_t header_size = 30;
constexpr std::uint32_t header_magic = 0xC6D3D0C5;
constexpr std::uint16_t no_checksum = 0xFFFF;

constexpr std::string_view first_line_start = "%!PS-Adobe-";
constexpr std::string_view bounding_box_start = "%%BoundingBox:";

/// A part of the file.
struct section {
    std::uint32_t offset = 0;
    std::uint32_t length = 0;
};

struct eps_header {
    section postscript;
    section metafile;
    section tiff;
};

// Seven little-endian numbers of 32 bits (magic, then offset and length of each section) and a checksum: all
// of them combined by exclusive or, folded to 16 bits.
std::optional<eps_header> read_header(vSTREAM& stream)
{
    std::array<std::uint8_t, header_size> bytes{};
    stream.MoveFromStart(0);
    if (stream.ReadPlain(bytes.data(), header_size) != header_size)
        return std::nullopt;
    byte_reader in(bytes);
    std::uint32_t sum = in.u32le();
    if (sum != header_magic)
        return std::nullopt;
    eps_header header;
    for (section* const part : {&header.postscript, &header.metafile, &header.tiff}) {
        *part = {in.u32le(), 0};
        part->length = in.u32le();
        sum ^= part->offset ^ part->length;
    }
    const std::uint16_t checksum = in.u16le();
    const bool valid = checksum == no_checksum || checksum == ((sum & 0xFFFF) ^ sum >> 16);
    return valid ? std::optional(header) : std::nullopt;
}

eps_header header_of(vSTREAM& stream)
{
    if (const auto header = read_header(stream))
        return *header;
    return {.postscript = {0, stream.Size()}, .metafile = {}, .tiff = {}};
}

/// The lines of a section. A line ends with a carriage return, a line feed or both; zero bytes are dropped.
class line_reader {
public:
    line_reader(vSTREAM& stream, const section& part)
        : stream_(stream)
        , left_(part.length)
    {
        stream_.MoveFromStart(part.offset);
    }

    /// False at the end of the section or of the stream, and for a line that is too long.
    bool next(std::string_view& line)
    {
        std::size_t length = 0;
        for (std::uint8_t byte = 0; take(byte);) {
            const bool end_of_pair = byte == '\n' && after_return_;
            after_return_ = byte == '\r';
            if (end_of_pair || byte == 0)
                continue;
            if (byte == '\r' || byte == '\n') {
                line = {line_.data(), length};
                return true;
            }
            if (length == line_.size())
                return false;
            line_[length++] = static_cast<char>(byte);
        }
        return false;
    }

private:
    static constexpr std::size_t longest_line = 256;

    bool take(std::uint8_t& byte)
    {
        if (at_ == held_) {
            const auto wanted = static_cast<std::uint32_t>(std::min<std::size_t>(left_, buffer_.size()));
            held_ = wanted != 0 ? std::min(stream_.ReadPlain(buffer_.data(), wanted), wanted) : 0;
            left_ -= held_;
            at_ = 0;
            if (held_ == 0)
                return false;
        }
        byte = buffer_[at_++];
        return true;
    }

    vSTREAM& stream_;
    std::uint32_t left_; ///< bytes of the section that are not in the buffer yet
    std::array<std::uint8_t, 512> buffer_{};
    std::uint32_t at_ = 0;
    std::uint32_t held_ = 0;
    bool after_return_ = false;
    std::array<char, longest_line> line_{};
};

/// True when the section begins as encapsulated PostScript has to: comments, of which one tells the bounds.
bool is_postscript(vSTREAM& stream, const section& part)
{
    line_reader lines(stream, part);
    std::string_view line;
    if (!lines.next(line) || !line.starts_with(first_line_start))
        return false;
    while (lines.next(line) && line.starts_with('%'))
        if (line.starts_with(bounding_box_start))
            return true;
    return false;
}

/// The bytes of a section; false when they are not all there.
bool read_section(vSTREAM& stream, const section& part, vBUFFER<std::uint8_t>& bytes)
{
    const std::uint32_t size = stream.Size();
    if (part.offset > size || part.length > size - part.offset || !bytes.resize_uninitialized(part.length))
        return false;
    stream.MoveFromStart(part.offset);
    return stream.ReadPlain(bytes.data(), part.length) == part.length;
}

} // namespace

EPSFILTER::EPSFILTER()
    : oFILTER(identity)
{
}

oFILTER_STATUS EPSFILTER::CheckStream(vARCHIVE& in)
{
    if (!in.IsStream())
        return Recognised(false);
    auto& stream = static_cast<vSTREAM&>(in);
    return Recognised(read_header(stream) || is_postscript(stream, {0, stream.Size()}));
}

oFILTER_STATUS EPSFILTER::Convert(vSTREAM& in, vSTREAM& out)
{
    const section text = header_of(in).postscript;
    vBUFFER<std::uint8_t> bytes;
    const bool copied = is_postscript(in, text) && read_section(in, text, bytes)
        && out.WritePlain(bytes.data(), text.length) == text.length;
    return SetStatus(copied ? oFILTER_OK : oFILTER_FAILED);
}

oFILTER_STATUS EPSFILTER::Convert(vSTREAM& in, oDIB& preview)
{
    const section tiff = header_of(in).tiff;
    vBUFFER<std::uint8_t> bytes;
    if (tiff.length == 0 || !read_section(in, tiff, bytes))
        return SetStatus(oFILTER_FAILED);
    std::uint8_t* slot = bytes.data();
    vMEMSTREAM stream(&slot, tiff.length, in.Name(), 0);
    TIFFILTER reader;
    static_cast<oFILTER&>(reader).SetProgressInd(progress());
    return SetStatus(reader.Convert(stream, preview));
}

} // namespace klv
