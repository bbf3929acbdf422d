#pragma once

#include "klv/imaging/image_io.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace klv::imaging {

/// A file in memory, for a codec whose input or output is a step on the way.
class memory_file {
public:
    memory_file() = default;
    explicit memory_file(std::span<const std::uint8_t> bytes)
        : read_only_(bytes)
    {
    }

    /// The callbacks by which an image_io reads and writes this file, which must stay where it is.
    [[nodiscard]] redirection io();
    [[nodiscard]] std::span<const std::uint8_t> bytes() const
    {
        return written_.empty() ? read_only_ : std::span<const std::uint8_t>(written_);
    }

private:
    static std::uint32_t read(std::uint8_t* bytes, std::uint32_t count, void* self);
    static std::uint32_t write(const std::uint8_t* bytes, std::uint32_t count, void* self);
    static std::int32_t seek(std::int32_t offset, std::int32_t origin, void* self);

    std::span<const std::uint8_t> read_only_;
    std::vector<std::uint8_t> written_;
    std::size_t position_ = 0;
};

} // namespace klv::imaging
