#include "klv/imaging/memory_file.h"

#include <algorithm>
#include <new>

namespace klv::imaging {

redirection memory_file::io()
{
    position_ = 0;
    return {nullptr, read, write, seek, nullptr, this};
}

std::uint32_t memory_file::read(std::uint8_t* bytes, std::uint32_t count, void* self)
{
    auto& file = *static_cast<memory_file*>(self);
    const auto left = file.bytes().subspan(file.position_);
    const std::size_t got = std::min<std::size_t>(count, left.size());
    std::copy_n(left.begin(), got, bytes);
    file.position_ += got;
    return static_cast<std::uint32_t>(got);
}

std::uint32_t memory_file::write(const std::uint8_t* bytes, std::uint32_t count, void* self)
{
    auto& file = *static_cast<memory_file*>(self);
    file.written_.resize(std::max(file.written_.size(), file.position_ + count));
    std::copy_n(bytes, count, file.written_.begin() + static_cast<std::ptrdiff_t>(file.position_));
    file.position_ += count;
    return count;
}

std::int32_t memory_file::seek(std::int32_t offset, std::int32_t origin, void* self)
{
    auto& file = *static_cast<memory_file*>(self);
    const auto size = static_cast<std::int64_t>(file.bytes().size());
    const std::int64_t base = origin == 0 ? 0
        : origin == 1                     ? static_cast<std::int64_t>(file.position_)
                                          : size;
    const std::int64_t target = base + offset;
    if (target < 0 || target > size || target > INT32_MAX)
        return -1;
    file.position_ = static_cast<std::size_t>(target);
    return static_cast<std::int32_t>(target);
}

} // namespace klv::imaging
