#pragma once

#include "klv/platform/system/ole_stream.h"
#include "klv/streams/typed_stream.h"

#include <cstdint>

namespace klv {

/// A stream over an OLE stream that the application hands in and keeps. Typed reads ignore SwapByteOrder;
/// moves and writes set no status.
class vOLESTREAM : public typed_stream<vOLESTREAM> {
public:
    static constexpr bool swaps_on_reading = false;

    explicit vOLESTREAM(IStream* const* stream, const vSTRING& name = vSTRING(), std::uint32_t = 0) noexcept;

    using typed_stream::operator=;
    /// Copies what remains of source into this stream.
    vOLESTREAM& operator=(vOLESTREAM& source) noexcept
    {
        vSTREAM::operator=(source);
        return *this;
    }

    std::uint32_t MoveFromCur(std::int32_t distance) noexcept final;
    std::uint32_t MoveFromStart(std::uint32_t position) noexcept final;
    std::uint32_t MoveFromEnd(std::int32_t distance) noexcept final;
    std::uint32_t CurrentPos() const noexcept final { return position_; }
    std::uint32_t Size() const noexcept final { return size_; }
    int AtEnd() const noexcept final { return size_ <= position_; }

private:
    friend class typed_stream<vOLESTREAM>;

    std::uint32_t get(std::uint8_t* to, std::uint32_t size) noexcept;
    std::uint32_t put(const std::uint8_t* from, std::uint32_t size) noexcept;
    bool seek(std::uint32_t position) noexcept;

    IStream* stream_;
    std::uint32_t position_ = 0;
    std::uint32_t size_ = 0;
};

} // namespace klv
