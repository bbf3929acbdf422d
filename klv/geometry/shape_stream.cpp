#include "klv/base/byte_order.h"
#include "klv/geometry/shape.h"
#include "klv/streams/compression/compression_frame.h"
#include "klv/streams/stream.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace klv {

// The stream form is the bounding box, the count, the capacity and the closed field, then the point records
// as one block.
namespace {

constexpr std::size_t header_size = 4 * 4 + 2 + 2 + 4;

template <std::size_t Width> void put(std::uint8_t*& out, std::uint32_t value)
{
    store_le<Width>(std::exchange(out, out + Width), value);
}

// Records that were written compressed lie in a frame and can't be used in place.
bool is_frame(std::span<const std::uint8_t> bytes, std::size_t block_size)
{
    const auto frame = compression_frame::read(bytes);
    return frame && frame->size < block_size && frame->size <= bytes.size() - compression_frame::header_size;
}

} // namespace

vSTREAM& vSHAPE::operator>>(vSTREAM& out) const noexcept
{
    // Most shapes have few points: one write takes header and records.
    constexpr std::size_t small = 480;
    std::array<std::uint8_t, header_size + small> bytes;
    std::uint8_t* end = bytes.data();
    for (const int edge : {box_.Left(), box_.Top(), box_.Right(), box_.Bottom()})
        put<4>(end, static_cast<std::uint32_t>(edge));
    put<2>(end, count_);
    put<2>(end, capacity_);
    put<4>(end, static_cast<std::uint32_t>(closed_));

    const auto block = std::as_bytes(records());
    const auto block_size = static_cast<std::uint32_t>(block.size());
    const bool together = block_size <= small && out.Compressed() == 0;
    if (together && block_size != 0) {
        std::memcpy(end, block.data(), block_size);
        end += block_size;
    }
    out.WritePlain(bytes.data(), static_cast<std::uint32_t>(end - bytes.data()));
    if (!together)
        out.WriteBlock(reinterpret_cast<const std::uint8_t*>(block.data()), block_size);
    return out;
}

vSHAPE::vSHAPE(vSTREAM& in) noexcept
{
    if (read_header(in) && !borrow_records(in))
        read_records(in);
}

vSTREAM& vSHAPE::operator<<(vSTREAM& in) noexcept
{
    clear();
    if (read_header(in))
        read_records(in);
    return in;
}

// Sets the count; the records are still to be read.
bool vSHAPE::read_header(vSTREAM& in) noexcept
{
    const std::uint32_t start = in.CurrentPos();
    const bool complete = in.Size() >= start && in.Size() - start >= header_size;
    const auto left = in.ReadSLong();
    const auto top = in.ReadSLong();
    const auto right = in.ReadSLong();
    const auto bottom = in.ReadSLong();
    box_ = vRECT(left, top, right, bottom);
    count_ = in.ReadUWord();
    const std::uint16_t capacity = in.ReadUWord();
    closed_ = in.ReadSLong();
    if (!complete)
        count_ = 0;
    capacity_ = std::max(capacity, static_cast<std::uint16_t>(count_));
    return count_ != 0;
}

bool vSHAPE::borrow_records(vSTREAM& in) noexcept
{
    const std::size_t size = count_ * point_record::size;
    const std::size_t position = in.CurrentPos();
    if (in.Size() < position || in.Size() - position < size || is_frame(in.View(in.Size()), size))
        return false;
    std::uint8_t* base = nullptr;
    if (in.LockStream(&base) == 0)
        return false;
    stream_ = &in;
    capacity_ = 0;
    records_ = reinterpret_cast<const point_record*>(base + position);
    in.MoveFromCur(static_cast<std::int32_t>(size));
    return true;
}

// Keeps the whole records that are there.
void vSHAPE::read_records(vSTREAM& in) noexcept
{
    const std::size_t wanted = count_;
    count_ = 0;
    if (!reserve(wanted)) {
        clear();
        return;
    }
    const std::int32_t got = in.ReadByteString(reinterpret_cast<std::uint8_t*>(points_.data()),
        static_cast<std::uint32_t>(wanted * point_record::size));
    count_ = got <= 0 ? 0 : static_cast<std::uint32_t>(static_cast<std::size_t>(got) / point_record::size);
}

} // namespace klv
