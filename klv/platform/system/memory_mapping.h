#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace klv {

/// A file's bytes mapped for reading, released with the object. Another process that shortens the file
/// meanwhile takes the bytes away: map only files that nobody else writes.
class file_mapping {
public:
    /// \return nothing when the file can't be opened or mapped; an empty file maps to no bytes.
    static std::optional<file_mapping> open(const char* path) noexcept;

    file_mapping(file_mapping&& other) noexcept;
    file_mapping& operator=(file_mapping&& other) noexcept;
    ~file_mapping();

    std::span<const std::uint8_t> bytes() const noexcept { return bytes_; }

private:
    explicit file_mapping(std::span<const std::uint8_t> bytes) noexcept
        : bytes_(bytes)
    {
    }

    std::span<const std::uint8_t> bytes_;
};

} // namespace klv
