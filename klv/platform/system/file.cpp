#include "klv/platform/system/file.h"

#include "klv/platform/system/directory.h"
#include "klv/platform/system/path.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <new>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace klv {

namespace {

// Writes to a file are counted under a hash of its identity, so that a buffer of another handle on the
// same file is known to be old. Files that share a counter cost each other a refill, nothing more.
constinit std::array<std::atomic<std::uint32_t>, 256> write_counters{};

std::atomic<std::uint32_t>* write_counter_of(const struct stat& file)
{
    const auto mixed = (static_cast<std::uint64_t>(file.st_ino) * 31 + file.st_dev) % write_counters.size();
    return &write_counters[mixed];
}

int open_again_when_interrupted(const char* path, int flags)
{
    constexpr ::mode_t new_file_mode = 0666;
    int descriptor;
    do
        // O_NONBLOCK: opening a pipe that nobody writes must not wait. It has no effect on files.
        descriptor = ::open(path, flags | O_CLOEXEC | O_NONBLOCK, new_file_mode);
    while (descriptor < 0 && errno == EINTR);
    return descriptor;
}

// Calls transfer(done) until all size bytes went through, it has nothing more, or it fails.
template <class Transfer> std::int64_t transfer_all(std::uint32_t size, Transfer transfer)
{
    std::uint32_t done = 0;
    while (done < size) {
        const auto count = transfer(done);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return done > 0 ? static_cast<std::int64_t>(done) : -1;
        if (count == 0)
            break;
        done += static_cast<std::uint32_t>(count);
    }
    return done;
}

// Path conversion may run out of memory; that is one more reason why a file can't be had.
template <class Result, class Operation>
Result with_host_path(const char* path, Result failed, Operation operation)
{
    try {
        return operation(host_path(path).c_str());
    } catch (const std::bad_alloc&) {
        return failed;
    }
}

} // namespace

system_file::system_file(int descriptor, std::string path)
    : descriptor_(descriptor)
    , path_(std::move(path))
    , writes_(write_counters.data())
{
}

std::shared_ptr<system_file> system_file::adopt(int descriptor, const char* path) noexcept
{
    if (descriptor < 0)
        return nullptr;
    struct stat status;
    if (::fstat(descriptor, &status) != 0 || S_ISDIR(status.st_mode)) {
        ::close(descriptor);
        return nullptr;
    }
    try {
        std::unique_ptr<system_file> file(new system_file(descriptor, path));
        descriptor = -1;
        file->writes_ = write_counter_of(status);
        return file;
    } catch (const std::bad_alloc&) {
        if (descriptor >= 0)
            ::close(descriptor);
        return nullptr;
    }
}

std::shared_ptr<system_file> system_file::open(const char* path, access wanted) noexcept
{
    return with_host_path(path, std::shared_ptr<system_file>(), [&](const char* host) {
        return adopt(open_again_when_interrupted(host, wanted == access::read ? O_RDONLY : O_RDWR), host);
    });
}

std::shared_ptr<system_file> system_file::create(const char* path, bool empty_it) noexcept
{
    return with_host_path(path, std::shared_ptr<system_file>(), [&](const char* host) {
        auto file
            = adopt(open_again_when_interrupted(host, O_RDWR | O_CREAT | (empty_it ? O_TRUNC : 0)), host);
        if (file && empty_it)
            ++*file->writes_;
        return file;
    });
}

std::shared_ptr<system_file> system_file::create_temporary(const char* prefix) noexcept
{
    try {
        std::string path = temporary_directory();
        if (path.empty())
            return nullptr;
        path += prefix;
        path += "XXXXXX";
        auto file = adopt(::mkostemp(path.data(), O_CLOEXEC), path.c_str());
        if (file)
            file->remove_when_released_ = true;
        return file;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

system_file::~system_file()
{
    close();
    if (remove_when_released_)
        ::unlink(path_.c_str());
}

bool system_file::close() noexcept
{
    if (descriptor_ < 0)
        return false;
    const bool closed = ::close(descriptor_) == 0;
    descriptor_ = -1;
    buffer_fill_ = 0;
    return closed;
}

bool system_file::fill_buffer() noexcept
{
    buffer_fill_ = 0;
    if (!buffer_)
        buffer_.reset(new (std::nothrow) std::uint8_t[buffer_size]);
    if (!buffer_)
        return false;
    buffered_writes_ = *writes_;
    const auto count = transfer_all(buffer_size, [&](std::uint32_t done) {
        return ::pread(descriptor_, buffer_.get() + done, buffer_size - done, pointer_ + done);
    });
    if (count < 0)
        return false;
    buffer_start_ = pointer_;
    buffer_fill_ = static_cast<std::uint32_t>(count);
    return true;
}

std::int64_t system_file::read(std::uint8_t* to, std::uint32_t size) noexcept
{
    if (!usable())
        return -1;
    if (read_buffered(to, size))
        return size;
    if (size < buffer_size && fill_buffer()) {
        const auto count = std::min(size, buffer_fill_);
        std::memcpy(to, buffer_.get(), count);
        pointer_ += count;
        return count;
    }
    const auto count = transfer_all(size,
        [&](std::uint32_t done) { return ::pread(descriptor_, to + done, size - done, pointer_ + done); });
    if (count > 0)
        pointer_ += count;
    return count;
}

std::span<const std::uint8_t> system_file::view(std::uint32_t size) noexcept
{
    if (!usable())
        return {};
    if (!buffers(std::min(size, buffer_size)) && !fill_buffer())
        return {};
    const auto start = static_cast<std::uint32_t>(pointer_ - buffer_start_);
    return {buffer_.get() + start, std::min(size, buffer_fill_ - start)};
}

std::int64_t system_file::write(const std::uint8_t* from, std::uint32_t size) noexcept
{
    if (!usable())
        return -1;
    const auto count = transfer_all(size,
        [&](std::uint32_t done) { return ::pwrite(descriptor_, from + done, size - done, pointer_ + done); });
    if (count <= 0)
        return count;

    const bool beside_buffer
        = pointer_ + count <= buffer_start_ || pointer_ > buffer_start_ + std::int64_t{buffer_fill_};
    const bool was_stale = stale();
    ++*writes_;
    if (beside_buffer && !was_stale)
        buffered_writes_ = *writes_;
    pointer_ += count;
    return count;
}

bool system_file::move_to(std::int64_t target) noexcept
{
    if (!usable() || target < 0)
        return false;
    pointer_ = target;
    return true;
}

std::int64_t system_file::size() const noexcept
{
    struct stat status;
    return usable() && ::fstat(descriptor_, &status) == 0 ? std::int64_t{status.st_size} : 0;
}

bool system_file::at_end() const noexcept
{
    // Bytes that are buffered need no question to the system.
    if (!stale() && pointer_ >= buffer_start_ && pointer_ < buffer_start_ + std::int64_t{buffer_fill_})
        return false;
    return size() <= pointer_;
}

bool file_exists(const char* path) noexcept
{
    return with_host_path(path, false, [](const char* host) { return ::access(host, F_OK) == 0; });
}

bool remove_file(const char* path) noexcept
{
    return with_host_path(path, false, [](const char* host) { return ::unlink(host) == 0; });
}

} // namespace klv
