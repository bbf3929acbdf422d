#pragma once

#include "klv/base/buffer.h"
#include "klv/base/types.h"
#include "klv/bitmaps/palette.h"

#include <cstdint>
#include <span>

namespace klv {

class vCOLOUR;

/// The colour table of a bitmap: owned entries of blue, green, red and a reserved byte that is 0.
/// When memory is out the array is missing and every operation answers 0.
class oDIBPALETTE final : public oPALETTE {
public:
    oDIBPALETTE() = default;
    /// Copies count colours; a null array gives count black entries.
    oDIBPALETTE(const RGBQUAD* colours, std::uint16_t count) noexcept;
    oDIBPALETTE(const PALETTEENTRY* colours, std::uint16_t count) noexcept;
    oDIBPALETTE(const oDIBPALETTE& other) noexcept;
    oDIBPALETTE& operator=(const oDIBPALETTE& other) noexcept;

    /// Both answer 1, or 0 when the index is not below the number of colours.
    virtual int SetColour(std::uint32_t index, const vCOLOUR& colour) noexcept;
    virtual int GetColour(std::uint32_t index, vCOLOUR& colour) const noexcept;
    /// Answers 0 and changes nothing.
    virtual int GetNearestColour(const vCOLOUR& wanted, vCOLOUR& nearest) const noexcept;

    /// The entries, or null when there are none.
    [[nodiscard]] const RGBQUAD* GetRgbQuad() const noexcept;
    [[nodiscard]] RGBQUAD* GetRgbQuad() noexcept;
    [[nodiscard]] std::span<const RGBQUAD> colours() const noexcept;

private:
    [[nodiscard]] bool make_room(std::uint16_t count) noexcept;

    vBUFFER<RGBQUAD> entries_;
};

} // namespace klv
