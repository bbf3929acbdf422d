#pragma once

#include "core/point.h"
#include "core/string.h"
#include "platform/imaging/imaging_api.h"

#include <array>
#include <cstdint>

namespace klv {

/// The sizes in which a file of several resolutions can be read, in the imaging library's order.
class resolution_table {
public:
    /// Resolutions that are told of one file.
    static constexpr std::uint32_t most = 29;

    /// Asks the imaging library about a file.
    /// \return the number of resolutions; 0 when the library or the file can't be had
    std::uint32_t read(const vSTRING& file_name, std::uint16_t format) noexcept;

    /// Pixels of a resolution; (0, 0) beyond the last.
    [[nodiscard]] vSIZE operator[](std::uint32_t index) const noexcept;

private:
    std::array<imaging::dimension, most> sizes_{};
    std::uint32_t count_ = 0;
};

} // namespace klv
