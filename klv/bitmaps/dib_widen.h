#pragma once

#include "klv/base/buffer.h"
#include "klv/bitmaps/dib.h"

#include <cstdint>

namespace klv {

/// A bitmap seen in a greater depth: its lines are widened as they are asked for, so that the view costs the
/// memory of one line. Changes of any kind are refused.
class widened_dib final : public oDIB {
public:
    /// \param source must outlive the view
    /// \param bits 4, 8 or 24, more than the source has
    widened_dib(const oDIB& source, std::uint16_t bits) noexcept;

    int GetImageLines(std::int32_t first, std::int32_t count, std::uint8_t* pixels,
        oCOLOUR_MODEL* model) const noexcept override;
    void operator>>(vSTREAM& stream) const noexcept override;

    int SetHeader(const oDIBHEADER&) noexcept override { return 0; }
    int SetPalette(const oDIBPALETTE&) noexcept override { return 0; }
    int SetImageBlock(const std::uint8_t*, oCOLOUR_MODEL, std::int32_t, std::int32_t, std::int32_t,
        std::int32_t) noexcept override
    {
        return 0;
    }
    /// Blocks are not served: whoever writes a file asks for lines.
    int GetImageBlock(std::int32_t, std::int32_t, std::int32_t, std::int32_t, std::uint8_t*,
        oCOLOUR_MODEL*) const noexcept override
    {
        return 0;
    }
    int SetImageLines(const std::uint8_t*, oCOLOUR_MODEL, std::int32_t, std::int32_t) noexcept override
    {
        return 0;
    }
    int LockImageLines(std::int32_t, std::int32_t, std::uint8_t** pixels, oCOLOUR_MODEL) noexcept override
    {
        if (pixels)
            *pixels = nullptr;
        return 0;
    }
    int ReleaseImageLines(int) noexcept override { return 0; }
    void operator<<(vSTREAM&) noexcept override { }

private:
    /// Widens source_line_.
    void widen(std::uint8_t* line) const noexcept;

    const oDIB& source_;
    mutable vBUFFER<std::uint8_t> source_line_;
    mutable vBUFFER<std::uint8_t> unpacked_;
};

} // namespace klv
