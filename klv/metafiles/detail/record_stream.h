#pragma once

#include "klv/base/byte_order.h"
#include "klv/core/point.h"
#include "klv/core/rect.h"
#include "klv/streams/stream.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace klv {

enum class record_code : std::uint16_t;

/// Puts records together in a small buffer and appends them to a stream in as few writes as possible. What is
/// still in the buffer is written when the writer goes.
class record_writer {
public:
    explicit record_writer(vSTREAM& stream)
        : stream_(stream)
    {
    }
    ~record_writer() { flush(); }
    record_writer(const record_writer&) = delete;
    record_writer& operator=(const record_writer&) = delete;

    void code(record_code c) { u16(static_cast<std::uint16_t>(c)); }
    void u16(std::uint16_t v) { put<2>(v); }
    void i32(std::int32_t v) { put<4>(static_cast<std::uint32_t>(v)); }
    void point(const vPOINT& p)
    {
        i32(p.x);
        i32(p.y);
    }
    void rect(const vRECT& r)
    {
        point(r.TopLeft());
        point(r.BottomRight());
    }
    /// A value that writes itself.
    template <class Value> void value(const Value& v)
    {
        flush();
        v >> stream_;
    }

private:
    template <std::size_t Width> void put(std::uint32_t v)
    {
        if (used_ + Width > bytes_.size())
            flush();
        store_le<Width>(&bytes_[used_], v);
        used_ += Width;
    }
    void flush()
    {
        if (used_ != 0)
            stream_.WritePlain(bytes_.data(), static_cast<std::uint32_t>(used_));
        used_ = 0;
    }

    vSTREAM& stream_;
    std::size_t used_ = 0;
    std::array<std::uint8_t, 256> bytes_; // only the first used_ bytes hold anything
};

/// Reads the fields of records from a stream that nobody vetted. A read that runs out answers 0 and leaves
/// the reader not ok, which sticks.
class record_reader {
public:
    /// version: that of the picture's header, which decides the layout of older records.
    record_reader(vSTREAM& stream, std::uint16_t version)
        : stream_(stream)
        , version_(version)
    {
    }

    bool ok() const { return stream_.Status() == vSTREAM_OK; }
    std::uint16_t version() const { return version_; }
    std::uint32_t left() const
    {
        const std::uint32_t size = stream_.Size();
        const std::uint32_t at = stream_.CurrentPos();
        return at < size ? size - at : 0;
    }
    bool holds(std::size_t count, std::size_t item_size) const { return count <= left() / item_size; }

    record_code code() { return record_code{u16()}; }
    std::uint16_t u16() { return stream_.ReadUWord(); }
    std::int16_t i16() { return stream_.ReadSWord(); }
    std::int32_t i32() { return stream_.ReadSLong(); }
    vPOINT point()
    {
        const std::int32_t x = i32();
        return vPOINT(x, i32());
    }
    vRECT rect()
    {
        const vPOINT top_left = point();
        return vRECT(top_left, point());
    }
    /// A value that reads itself.
    template <class Value> void value(Value& v) { v << stream_; }

    vSTREAM& stream() { return stream_; }

private:
    vSTREAM& stream_;
    std::uint16_t version_;
};

} // namespace klv
