#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace klv::imaging {

/// The first section of an OLE property set ([MS-OLEPS]), of which numbers and blobs are read. Does not own
/// the bytes.
class property_set {
public:
    explicit property_set(std::span<const std::uint8_t> stream);

    /// A signed or unsigned number of 32 bits, or fallback.
    [[nodiscard]] std::uint32_t number(std::uint32_t id, std::uint32_t fallback) const;
    /// A blob; empty when there is none.
    [[nodiscard]] std::span<const std::uint8_t> blob(std::uint32_t id) const;

private:
    struct entry {
        std::uint32_t id;
        std::uint32_t offset;
    };
    /// The bytes of a value, from its type on.
    [[nodiscard]] std::span<const std::uint8_t> value(std::uint32_t id) const;

    std::span<const std::uint8_t> section_;
    std::vector<entry> entries_; ///< by id
};

} // namespace klv::imaging
