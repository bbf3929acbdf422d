#include "klv/imaging/image_io.h"

#include <algorithm>

namespace klv::imaging {

namespace {

constexpr std::int32_t from_start = 0;
constexpr std::int32_t from_end = 2;

} // namespace

image_io::image_io(const redirection& redirected, const char* name, access how)
    : redirected_(redirected)
{
    if (redirected_.active()) {
        open_ = !redirected_.open
            || redirected_.open(name, static_cast<std::int32_t>(how), redirected_.user) > 0;
        return;
    }
    file_ = name ? std::fopen(name, how == access::reading ? "rb" : "wb") : nullptr;
    open_ = file_ != nullptr;
}

image_io::~image_io()
{
    if (file_)
        std::fclose(file_);
    else if (open_ && redirected_.close)
        redirected_.close(redirected_.user);
}

std::int32_t image_io::seek_by(std::int32_t offset, std::int32_t origin)
{
    if (!file_)
        return redirected_.seek ? redirected_.seek(offset, origin, redirected_.user) : -1;
    if (std::fseek(file_, offset, origin == from_end ? SEEK_END : SEEK_SET) != 0)
        return -1;
    const auto position = std::ftell(file_);
    return position < 0 || position > INT32_MAX ? -1 : static_cast<std::int32_t>(position);
}

std::uint32_t image_io::size()
{
    const std::int32_t end = seek_by(0, from_end);
    return end < 0 || seek_by(0, from_start) < 0 ? 0 : static_cast<std::uint32_t>(end);
}

bool image_io::seek(std::uint32_t offset)
{
    return offset <= INT32_MAX && seek_by(static_cast<std::int32_t>(offset), from_start) >= 0;
}

std::size_t image_io::read(std::span<std::uint8_t> bytes)
{
    if (file_)
        return std::fread(bytes.data(), 1, bytes.size(), file_);
    if (!redirected_.read)
        return 0;
    const auto wanted = static_cast<std::uint32_t>(std::min<std::size_t>(bytes.size(), INT32_MAX));
    return std::min(redirected_.read(bytes.data(), wanted, redirected_.user), wanted);
}

bool image_io::write(std::span<const std::uint8_t> bytes)
{
    if (file_)
        return std::fwrite(bytes.data(), 1, bytes.size(), file_) == bytes.size();
    return redirected_.write && bytes.size() <= INT32_MAX
        && redirected_.write(bytes.data(), static_cast<std::uint32_t>(bytes.size()), redirected_.user)
        == bytes.size();
}

std::vector<std::uint8_t> image_io::read_all()
{
    std::vector<std::uint8_t> bytes(size());
    bytes.resize(read(bytes));
    return bytes;
}

} // namespace klv::imaging
