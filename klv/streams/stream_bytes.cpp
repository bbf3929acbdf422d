#include "klv/streams/stream_bytes.h"

#include "klv/streams/stream.h"

#include <algorithm>
#include <cstddef>

namespace klv {

namespace {
// A size that a stream only claims to have costs no more than one chunk beyond what it holds.
constexpr std::uint32_t first_chunk = 1 << 16;
} // namespace

stream_bytes::stream_bytes(vSTREAM& stream) noexcept
{
    const std::uint32_t end = stream.Size();
    const std::uint32_t start = std::min(stream.CurrentPos(), end);
    const std::uint32_t wanted = end - start;
    bytes_ = stream.View(wanted);
    if (bytes_.size() == wanted)
        return;

    std::uint32_t chunk = first_chunk;
    for (std::uint32_t got = 0; got < wanted;) {
        const std::uint32_t next = std::min(chunk, wanted - got);
        if (!buffer_.resize_uninitialized(std::size_t{got} + next)) {
            complete_ = false;
            break;
        }
        const std::uint32_t read = stream.ReadPlain(buffer_.data() + got, next);
        got += std::min(read, next);
        buffer_.truncate(got);
        if (read < next)
            break;
        chunk = got;
    }
    bytes_ = buffer_.span();
}

} // namespace klv
