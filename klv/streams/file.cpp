#include "klv/streams/file.h"

#include <algorithm>

namespace klv {

namespace {

constexpr std::uint32_t existing_only = 0x80000000; // the bit of the modes that make no file

} // namespace

vFILE::vFILE() noexcept
    : mode_(temporary)
{
    open_temporary();
}

vFILE::vFILE(const vSTRING& name, std::uint32_t mode, int cached) noexcept
    : typed_stream(name)
    , mode_(mode)
{
    open();
    // Without memory for the cache the file works uncached.
    if (cached)
        static_cast<void>(cache_.resize_uninitialized(cache_size));
}

vFILE::vFILE(const vFILE& other) noexcept
    : typed_stream(other)
    , file_(other.file_)
{
    set_status(vSTREAM_OK);
}

vFILE::~vFILE() { flush(); }

void vFILE::open() noexcept
{
    const char* path = Name()();
    if ((mode_ & existing_only) == 0) {
        file_ = system_file::create(path, mode_ == truncate);
    } else if (!file_exists(path)) {
        set_status(vSTREAM_NOT_FOUND);
        return;
    } else {
        const auto access = mode_ == read_only ? system_file::access::read : system_file::access::read_write;
        file_ = system_file::open(path, access);
    }
    if (!file_)
        set_status(vSTREAM_OPEN_ERROR);
}

void vFILE::open_temporary() noexcept
{
    file_ = system_file::create_temporary("vm");
    if (file_)
        Name() = file_->path().c_str();
    else
        set_status(vSTREAM_OPEN_ERROR);
}

int vFILE::Close() noexcept
{
    flush();
    return file_ && file_->close() ? 1 : 0;
}

int vFILE::ReOpen() noexcept
{
    flush();
    cache_.release();
    set_status(vSTREAM_OK);
    const auto before = std::move(file_);
    if (Name().Null()) {
        mode_ = temporary;
        open_temporary();
    } else {
        open();
    }
    // A temporary file that is opened again lives on with this opening.
    if (mode_ == temporary && file_ && before && before->path() == file_->path()) {
        before->remove_when_released(false);
        file_->remove_when_released(true);
    }
    return usable() ? 1 : 0;
}

std::uint32_t vFILE::get_rest(std::uint8_t* to, std::uint32_t size) noexcept
{
    if (size == 0)
        return 0;
    flush();
    const auto count = usable() ? file_->read(to, size) : -1;
    if (count < 0) {
        set_status(vSTREAM_READ_ERROR);
        return 0;
    }
    if (count < size)
        set_status(vSTREAM_END);
    return static_cast<std::uint32_t>(count);
}

std::span<const std::uint8_t> vFILE::View(std::uint32_t size) noexcept
{
    flush();
    return usable() ? file_->view(size) : std::span<const std::uint8_t>();
}

std::uint32_t vFILE::put(const std::uint8_t* from, std::uint32_t size) noexcept
{
    if (!usable()) {
        set_status(vSTREAM_WRITE_ERROR);
        return 0;
    }
    if (writes_refused()) {
        set_status(vSTREAM_READ_ONLY);
        return 0;
    }
    if (size == 0)
        return 0;
    return cache_.empty() ? write_through(from, size) : write_cached(from, size);
}

std::uint32_t vFILE::write_through(const std::uint8_t* from, std::uint32_t size) noexcept
{
    const auto count = file_->write(from, size);
    if (count < size)
        set_status(vSTREAM_WRITE_ERROR);
    return static_cast<std::uint32_t>(std::max<std::int64_t>(count, 0));
}

std::uint32_t vFILE::write_cached(const std::uint8_t* from, std::uint32_t size) noexcept
{
    if (size > cache_size - cache_position_) {
        if (!flush())
            return 0;
        if (size > cache_size)
            return write_through(from, size);
    }
    std::copy_n(from, size, cache_.data() + cache_position_);
    cache_position_ = static_cast<std::uint16_t>(cache_position_ + size);
    cache_fill_ = std::max(cache_fill_, cache_position_);
    return size;
}

// Writes the cache out and leaves the file's own pointer where the stream stands.
bool vFILE::flush() noexcept
{
    if (cache_fill_ == 0)
        return true;
    const auto position = usable() ? file_->pointer() + cache_position_ : 0;
    const std::uint32_t waiting = cache_fill_;
    cache_fill_ = 0;
    cache_position_ = 0;
    const bool written = usable() && write_through(cache_.data(), waiting) == waiting;
    if (!written)
        set_status(vSTREAM_WRITE_ERROR);
    else
        file_->move_to(position);
    return written;
}

std::uint32_t vFILE::CurrentPos() const noexcept
{
    return usable() ? static_cast<std::uint32_t>((file_->pointer() + cache_position_) & UINT32_MAX) : 0;
}

std::uint32_t vFILE::Size() const noexcept
{
    return usable() ? static_cast<std::uint32_t>(std::min<std::int64_t>(file_->size(), UINT32_MAX)) : 0;
}

int vFILE::AtEnd() const noexcept
{
    if (usable() && cache_fill_ > 0)
        return cache_position_ == cache_fill_ && file_->size() <= file_->pointer() + cache_fill_;
    return !usable() || file_->at_end();
}

std::uint32_t vFILE::MoveFromCur(std::int32_t distance) noexcept
{
    return move_to(std::int64_t{CurrentPos()} + distance);
}

std::uint32_t vFILE::MoveFromStart(std::uint32_t position) noexcept { return move_to(position); }

std::uint32_t vFILE::MoveFromEnd(std::int32_t distance) noexcept
{
    flush();
    return move_to((usable() ? file_->size() : 0) + distance);
}

// A move among the waiting bytes of the cache leaves the file alone.
std::uint32_t vFILE::move_to(std::int64_t target) noexcept
{
    const auto in_cache = usable() ? target - file_->pointer() : -1;
    if (cache_fill_ > 0 && in_cache >= 0 && in_cache <= cache_fill_) {
        set_status(vSTREAM_OK);
        cache_position_ = static_cast<std::uint16_t>(in_cache);
        return CurrentPos();
    }
    const bool moved = flush() && target <= UINT32_MAX && usable() && file_->move_to(target);
    set_status(moved ? vSTREAM_OK : vSTREAM_END);
    return moved ? CurrentPos() : 0;
}

vFILE& vFILE::operator=(vFILE& source) noexcept
{
    constexpr std::uint32_t small_chunk = 2000;
    copy_rest_of(source, small_chunk);
    return *this;
}

} // namespace klv
