#pragma once

#include "klv/imaging/imaging_api.h"

#include <cstdint>
#include <cstdio>
#include <span>
#include <vector>

namespace klv::imaging {

/// The callbacks of L_RedirectIO; without them names are file names.
struct redirection {
    open_callback open = nullptr;
    read_callback read = nullptr;
    write_callback write = nullptr;
    seek_callback seek = nullptr;
    close_callback close = nullptr;
    void* user = nullptr;

    [[nodiscard]] bool active() const { return read != nullptr || write != nullptr; }
};

/// The file that is being read or written: the caller's stream or one of the file system.
class image_io {
public:
    enum class access : std::int32_t { reading = 0, writing = 1 };

    image_io(const redirection& redirected, const char* name, access how);
    image_io(const image_io&) = delete;
    image_io& operator=(const image_io&) = delete;
    ~image_io();

    [[nodiscard]] bool is_open() const { return open_; }
    /// Bytes of the whole file.
    [[nodiscard]] std::uint32_t size();
    [[nodiscard]] bool seek(std::uint32_t offset);
    /// Bytes delivered.
    std::size_t read(std::span<std::uint8_t> bytes);
    [[nodiscard]] bool write(std::span<const std::uint8_t> bytes);
    /// The file of the file system; null when the caller's stream is read.
    [[nodiscard]] std::FILE* file() const { return file_; }
    /// The whole file, as far as it can be read.
    std::vector<std::uint8_t> read_all();

private:
    std::int32_t seek_by(std::int32_t offset, std::int32_t origin);

    const redirection& redirected_;
    std::FILE* file_ = nullptr;
    bool open_ = false;
};

} // namespace klv::imaging
