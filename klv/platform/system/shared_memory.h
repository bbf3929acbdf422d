#pragma once

#include <cstddef>
#include <string>

namespace klv {

/// A named block of memory that the user's processes share. It appears with its first owner, filled with
/// zeros, and goes with its last.
class shared_memory {
public:
    shared_memory() = default;
    shared_memory(const shared_memory&) = delete;
    shared_memory& operator=(const shared_memory&) = delete;
    ~shared_memory() { close(); }

    /// Opens the block or makes it. \return false when that fails; data() is then null
    bool open(const char* name, std::size_t size) noexcept;
    void close() noexcept;

    [[nodiscard]] void* data() const noexcept { return data_; }
    [[nodiscard]] std::size_t size() const noexcept { return size_; }
    /// Whether open made the block.
    [[nodiscard]] bool is_new() const noexcept { return is_new_; }

private:
    void* data_ = nullptr;
    std::size_t size_ = 0;
    int file_ = -1;
    bool is_new_ = false;
    std::string path_;
};

} // namespace klv
