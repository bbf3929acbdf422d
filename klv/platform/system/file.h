#pragma once

#include <atomic>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace klv {

/// An open file with its pointer, shared by everyone who holds it and closed with the last. Reads are
/// buffered; writes go to the system at once and are seen by every other system_file of the process.
class system_file {
public:
    enum class access { read, read_write };

    /// Opens an existing file. \return null when it can't be opened or is a directory.
    static std::shared_ptr<system_file> open(const char* path, access wanted) noexcept;
    /// Opens a file for reading and writing and makes it when it is missing; empties it when asked.
    static std::shared_ptr<system_file> create(const char* path, bool empty_it) noexcept;
    /// A new file of a new name in the temporary directory that begins with prefix, removed when released.
    static std::shared_ptr<system_file> create_temporary(const char* prefix) noexcept;

    system_file(const system_file&) = delete;
    system_file& operator=(const system_file&) = delete;
    ~system_file();

    /// Closes the file for all who hold it. \return false when it was closed already or the system refused.
    bool close() noexcept;
    /// Whether the file is deleted when the last who holds it lets go.
    void remove_when_released(bool remove) noexcept { remove_when_released_ = remove; }
    bool usable() const noexcept { return descriptor_ >= 0; }
    const std::string& path() const noexcept { return path_; }

    /// Reads at the pointer and advances it. \return bytes read, less than size at the end; -1 on failure.
    std::int64_t read(std::uint8_t* to, std::uint32_t size) noexcept;
    /// The same when all size bytes are buffered; else reads nothing and answers false.
    bool read_buffered(std::uint8_t* to, std::uint32_t size) noexcept
    {
        if (!buffers(size))
            return false;
        std::memcpy(to, buffer_.get() + (pointer_ - buffer_start_), size);
        pointer_ += size;
        return true;
    }
    /// At most size of the next bytes, as many as the buffer holds, without moving.
    std::span<const std::uint8_t> view(std::uint32_t size) noexcept;
    /// Writes at the pointer and advances it. \return bytes written; -1 on failure.
    std::int64_t write(const std::uint8_t* from, std::uint32_t size) noexcept;

    std::int64_t pointer() const noexcept { return pointer_; }
    /// \return false, and no move, when target is negative.
    bool move_to(std::int64_t target) noexcept;
    /// The file's size in bytes; 0 when it is closed.
    std::int64_t size() const noexcept;
    /// Whether the pointer has reached the size.
    bool at_end() const noexcept;

private:
    static constexpr std::uint32_t buffer_size = 32 * 1024;

    system_file(int descriptor, std::string path);
    static std::shared_ptr<system_file> adopt(int descriptor, const char* path) noexcept;
    bool stale() const noexcept { return *writes_ != buffered_writes_; }
    bool buffers(std::uint32_t size) const noexcept
    {
        const auto skipped = static_cast<std::uint64_t>(pointer_ - buffer_start_);
        return skipped <= buffer_fill_ && size <= buffer_fill_ - skipped && !stale();
    }
    bool fill_buffer() noexcept;

    int descriptor_;
    std::string path_;
    bool remove_when_released_ = false;
    std::int64_t pointer_ = 0;

    std::unique_ptr<std::uint8_t[]> buffer_;
    std::int64_t buffer_start_ = 0;
    std::uint32_t buffer_fill_ = 0;
    std::uint32_t buffered_writes_ = 0; // *writes_ when the buffer was filled
    std::atomic<std::uint32_t>* writes_; // counts the writes of this process to the file
};

bool file_exists(const char* path) noexcept;
bool remove_file(const char* path) noexcept;

} // namespace klv
