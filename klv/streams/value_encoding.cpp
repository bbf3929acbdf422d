#include "klv/base/buffer.h"
#include "klv/core/real.h"
#include "klv/core/string.h"
#include "klv/streams/stream.h"

#include <string_view>

namespace klv {

vSTREAM& vREAL::operator<<(vSTREAM& from) noexcept
{
    raw_ = from.ReadSLong();
    return from;
}

vSTREAM& vREAL::operator>>(vSTREAM& to) const noexcept
{
    to.WriteSLong(raw_);
    return to;
}

// A 16-bit length, then that many bytes as one block.
vSTREAM& vSTRING::operator<<(vSTREAM& from) noexcept
{
    const auto length = from.ReadUWord();
    vBUFFER<std::uint8_t> bytes;
    Assign({});
    if (length == 0 || !bytes.resize_uninitialized(length))
        return from;
    const auto got = from.ReadByteString(bytes.data(), length);
    if (got > 0)
        Assign({reinterpret_cast<const char*>(bytes.data()), static_cast<std::size_t>(got)});
    return from;
}

vSTREAM& vSTRING::operator>>(vSTREAM& to) const noexcept
{
    to.WriteUWord(Length());
    if (!Null())
        to.WriteBlock(reinterpret_cast<const std::uint8_t*>((*this)()), Length());
    return to;
}

} // namespace klv
