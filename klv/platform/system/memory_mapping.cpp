#include "klv/platform/system/memory_mapping.h"

#include "klv/platform/system/path.h"

#include <new>
#include <utility>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace klv {

namespace {

int open_for_reading(const char* path) noexcept
{
    try {
        return ::open(host_path(path).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    } catch (const std::bad_alloc&) {
        return -1;
    }
}

} // namespace

std::optional<file_mapping> file_mapping::open(const char* path) noexcept
{
    const int descriptor = open_for_reading(path);
    if (descriptor < 0)
        return std::nullopt;
    struct stat status;
    const bool regular = ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    const auto size = regular ? static_cast<std::size_t>(status.st_size) : 0;
    void* address = size > 0 ? ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor, 0) : nullptr;
    ::close(descriptor);
    if (!regular || address == MAP_FAILED)
        return std::nullopt;
    return file_mapping({static_cast<const std::uint8_t*>(address), size});
}

file_mapping::file_mapping(file_mapping&& other) noexcept
    : bytes_(std::exchange(other.bytes_, {}))
{
}

file_mapping& file_mapping::operator=(file_mapping&& other) noexcept
{
    std::swap(bytes_, other.bytes_);
    return *this;
}

file_mapping::~file_mapping()
{
    if (!bytes_.empty())
        ::munmap(const_cast<std::uint8_t*>(bytes_.data()), bytes_.size());
}

} // namespace klv
