#include "klv/platform/system/shared_memory.h"

#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace klv {

namespace {

// Every owner holds a shared lock on the block's file; who can lock it exclusively is alone with it. Locks go
// with their process, so what a crashed one leaves behind is found and taken over as new.
bool lock(int file, int kind) noexcept { return flock(file, kind) == 0; }

bool still_named(int file) noexcept
{
    struct stat status = {};
    return fstat(file, &status) == 0 && status.st_nlink > 0;
}

bool holds_size(int file, std::size_t size) noexcept
{
    struct stat status = {};
    return fstat(file, &status) == 0 && std::cmp_greater_equal(status.st_size, size);
}

bool fill_with_zeros(int file, std::size_t size) noexcept
{
    return ftruncate(file, 0) == 0 && ftruncate(file, static_cast<off_t>(size)) == 0;
}

// Opens the file and takes the shared lock. The last owner may remove the file in between; then once more.
int open_locked(const char* path, std::size_t size, bool& is_new) noexcept
{
    constexpr int most_attempts = 8;
    for (int attempt = 0; attempt < most_attempts; ++attempt) {
        const int file = shm_open(path, O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
        if (file < 0)
            return -1;
        is_new = lock(file, LOCK_EX | LOCK_NB) && still_named(file) && fill_with_zeros(file, size);
        if (lock(file, LOCK_SH) && still_named(file) && holds_size(file, size))
            return file;
        ::close(file);
    }
    return -1;
}

} // namespace

bool shared_memory::open(const char* name, std::size_t size) noexcept
{
    close();
    try {
        path_ = "/klv-" + std::to_string(getuid()) + '-' + name;
    } catch (const std::bad_alloc&) {
        return false;
    }
    file_ = open_locked(path_.c_str(), size, is_new_);
    if (file_ < 0)
        return false;
    void* const mapped = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file_, 0);
    if (mapped == MAP_FAILED) {
        close();
        return false;
    }
    data_ = mapped;
    size_ = size;
    return true;
}

void shared_memory::close() noexcept
{
    if (data_)
        munmap(std::exchange(data_, nullptr), std::exchange(size_, 0));
    if (file_ < 0)
        return;
    if (lock(file_, LOCK_EX | LOCK_NB))
        shm_unlink(path_.c_str());
    ::close(std::exchange(file_, -1));
}

} // namespace klv
