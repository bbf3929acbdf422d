#pragma once

#include "klv/core/object.h"

#include <cstdint>

namespace klv {

/// A colour table of some kind: how many colours it has.
class oPALETTE : public vOBJECT {
public:
    oPALETTE() = default;
    explicit oPALETTE(std::uint16_t colours)
        : colours_(colours)
    {
    }

    [[nodiscard]] std::uint16_t GetNumColours() const noexcept { return colours_; }
    void SetNumColours(std::uint16_t colours) noexcept { colours_ = colours; }

private:
    std::uint16_t colours_ = 0;
};

} // namespace klv
