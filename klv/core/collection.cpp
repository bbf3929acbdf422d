#include "klv/core/collection.h"

#include "klv/base/memory.h"

#include <cstring>
#include <limits>

namespace klv {

namespace {

constexpr std::uint32_t growth = 256;
constexpr std::uint32_t bytes_of_value = 2;

// What the growth rule reserves for each stored value.
std::uint32_t reserved_for_value(vARRAYTYPE type) noexcept
{
    constexpr std::uint8_t bytes[] = {4, 8, 16, 2, 4};
    const auto index = static_cast<std::size_t>(type);
    return index < std::size(bytes) ? bytes[index] : bytes_of_value;
}

bool reads_as_points(vARRAYTYPE type) noexcept
{
    return type == vARRAYTYPE::int_pairs || type == vARRAYTYPE::words || type == vARRAYTYPE::longs;
}

} // namespace

vCOLLECTION::vCOLLECTION(
    std::uint8_t* buffer, vARRAYTYPE type, std::uint16_t capacity, std::uint16_t count) noexcept
    : buffer_(buffer)
    , type_(type)
    , capacity_(capacity)
    , count_(count)
    , owns_(false)
{
}

vCOLLECTION::~vCOLLECTION()
{
    if (owns_)
        vMemFree(buffer_);
}

void vCOLLECTION::Update() noexcept
{
    if (!owns_ || (buffer_ && capacity_ > count_ * reserved_for_value(type_)))
        return;
    if (void* const moved = vMemRealloc(buffer_, capacity_ + growth)) {
        buffer_ = static_cast<std::uint8_t*>(moved);
        capacity_ += growth;
    }
}

int vCOLLECTION::AddPoint(const vPOINT& p) noexcept
{
    if (type_ != vARRAYTYPE::int_pairs || count_ > std::numeric_limits<std::uint16_t>::max() - 2)
        return 0;
    Update();
    const std::uint32_t used = count_ * bytes_of_value;
    if (!buffer_ || capacity_ < used + 2 * bytes_of_value)
        return 0;
    const std::uint16_t values[]
        = {static_cast<std::uint16_t>(p.x & 0xFFFF), static_cast<std::uint16_t>(p.y & 0xFFFF)};
    std::memcpy(buffer_ + used, values, sizeof values);
    count_ = static_cast<std::uint16_t>(count_ + 2);
    return 1;
}

vPOINT vCOLLECTION::GetPoint(std::uint16_t i) const noexcept
{
    const std::uint32_t at = i * 2 * bytes_of_value;
    if (!reads_as_points(type_) || !buffer_ || std::uint32_t{i} * 2 + 2 > count_)
        return {};
    std::int16_t values[2];
    std::memcpy(values, buffer_ + at, sizeof values);
    return {values[0], values[1]};
}

} // namespace klv
