#pragma once

#include "klv/platform/system/handle_token.h"
#include "klv/streams/stream.h"

#include <cstdint>
#include <cstring>

namespace klv {

/// The typed reads and writes that every concrete stream shares, so that a call on a known stream is inline.
/// Stream provides
///   std::uint32_t get(std::uint8_t* to, std::uint32_t size)          ReadPlain
///   std::uint32_t put(const std::uint8_t* from, std::uint32_t size)  WritePlain
///   static constexpr bool swaps_on_reading                           whether SwapByteOrder has effect
template <class Stream> class typed_stream : public vSTREAM {
public:
    using vSTREAM::operator=;

    std::uint32_t ReadULong() noexcept final
    {
        auto value = read<4>();
        if (swapped())
            SwapULong(&value);
        return value;
    }
    std::uint16_t ReadUWord() noexcept final
    {
        auto value = static_cast<std::uint16_t>(read<2>());
        if (swapped())
            SwapUWord(&value);
        return value;
    }
    std::uint8_t ReadUByte() noexcept final { return static_cast<std::uint8_t>(read<1>()); }
    std::int32_t ReadSLong() noexcept final
    {
        auto value = static_cast<std::int32_t>(read<4>());
        if (swapped())
            SwapSLong(&value);
        return value;
    }
    std::int16_t ReadSWord() noexcept final
    {
        auto value = static_cast<std::int16_t>(static_cast<std::uint16_t>(read<2>()));
        if (swapped())
            SwapSWord(&value);
        return value;
    }
    std::int8_t ReadSByte() noexcept final { return static_cast<std::int8_t>(ReadUByte()); }
    vOBJECT* ReadPointer() noexcept final { return static_cast<vOBJECT*>(pointer_of(read<4>())); }
    std::int32_t ReadByteString(std::uint8_t* buffer, std::uint32_t size) noexcept final
    {
        return read_block(buffer, size);
    }

    std::uint16_t WriteULong(std::uint32_t value) noexcept final { return write<4>(value); }
    std::uint16_t WriteUWord(std::uint16_t value) noexcept final { return write<2>(value); }
    std::uint16_t WriteUByte(std::uint8_t value) noexcept final { return write<1>(value); }
    std::uint16_t WriteSLong(std::int32_t value) noexcept final
    {
        return write<4>(static_cast<std::uint32_t>(value));
    }
    std::uint16_t WriteSWord(std::int16_t value) noexcept final
    {
        return write<2>(static_cast<std::uint16_t>(value));
    }
    std::uint16_t WriteSByte(std::int8_t value) noexcept final
    {
        return write<1>(static_cast<std::uint8_t>(value));
    }
    std::uint16_t WritePointer(const vOBJECT* object) noexcept final { return write<4>(token_of(object)); }
    std::uint32_t WriteByteString(const std::uint8_t* text) noexcept final
    {
        const auto length = std::strlen(reinterpret_cast<const char*>(text));
        return length > UINT32_MAX ? 0 : self().put(text, static_cast<std::uint32_t>(length));
    }
    std::uint32_t WriteBlock(const std::uint8_t* data, std::uint32_t size) noexcept final
    {
        return Compressed() ? write_block(data, size) : self().put(data, size);
    }

    std::uint32_t ReadPlain(std::uint8_t* buffer, std::uint32_t size) noexcept final
    {
        return self().get(buffer, size);
    }
    std::uint32_t WritePlain(const std::uint8_t* data, std::uint32_t size) noexcept final
    {
        return self().put(data, size);
    }

protected:
    using vSTREAM::vSTREAM;

private:
    Stream& self() noexcept { return static_cast<Stream&>(*this); }
    bool swapped() const noexcept { return Stream::swaps_on_reading && SwappedByteOrder() != 0; }

    template <std::uint32_t Width> std::uint32_t read() noexcept
    {
        std::uint8_t bytes[Width];
        if (self().get(bytes, Width) != Width)
            return 0;
        std::uint32_t value = 0;
        for (std::uint32_t i = 0; i < Width; ++i)
            value |= std::uint32_t{bytes[i]} << (8 * i);
        return value;
    }

    template <std::uint32_t Width> std::uint16_t write(std::uint32_t value) noexcept
    {
        std::uint8_t bytes[Width];
        for (std::uint32_t i = 0; i < Width; ++i)
            bytes[i] = static_cast<std::uint8_t>((value >> (8 * i)) & 0xFF);
        return static_cast<std::uint16_t>(self().put(bytes, Width));
    }
};

} // namespace klv
