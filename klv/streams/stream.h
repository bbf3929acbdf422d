#pragma once

#include "klv/base/buffer.h"
#include "klv/core/string.h"
#include "klv/streams/archive.h"

#include <cstdint>
#include <optional>
#include <span>

namespace klv {

/// State of a stream. It stays until an operation resets it.
enum vSTREAMSTATUS : std::uint32_t {
    vSTREAM_OK = 0, ///< no error; a successful move after the end of data brings it back
    vSTREAM_OPEN_ERROR = 1, ///< no file could be opened, or no memory was there for the stream
    vSTREAM_END = 2, ///< a read delivered fewer bytes than asked, or a move went past the end
    vSTREAM_READ_ERROR = 3, ///< no open file, the system refused, or a compressed block is damaged
    vSTREAM_WRITE_ERROR = 4, ///< a write delivered nothing, or a copy into the stream came up short
    vSTREAM_NOT_FOUND = 5, ///< the file to be opened for reading only does not exist
    vSTREAM_READ_ONLY = 6, ///< a write was tried on a stream opened for reading only
};

struct compression_frame;

/// A stream of bytes with a position. Integers are little-endian; reads turn them round when
/// SwapByteOrder is set. A block may travel as a compression frame (see compression_frame.h).
///
/// A typed read that finds too few bytes answers 0 and sets vSTREAM_END. Sizes and positions are bytes.
class vSTREAM : public vARCHIVE {
public:
    vSTREAM() = default;
    explicit vSTREAM(const vSTRING& name, std::uint32_t = 0) noexcept
        : name_(name)
    {
    }
    vSTREAM(const vSTREAM&) = default;
    ~vSTREAM() override { DecCount(); }

    int IsStream() const noexcept override { return 1; }
    virtual int Close() noexcept { return 0; }
    virtual int ReOpen() noexcept { return 0; }

    virtual std::uint32_t ReadULong() noexcept = 0;
    virtual std::uint16_t ReadUWord() noexcept = 0;
    virtual std::uint8_t ReadUByte() noexcept = 0;
    virtual std::int32_t ReadSLong() noexcept = 0;
    virtual std::int16_t ReadSWord() noexcept = 0;
    virtual std::int8_t ReadSByte() noexcept = 0;
    /// The object whose token (see platform/handle_token.h) comes next; null for a token nobody wrote.
    virtual vOBJECT* ReadPointer() noexcept = 0;
    /// The block read: at most size bytes of the next block, taken out of its compression frame if it has
    /// one. \return bytes delivered; fewer than size sets vSTREAM_END.
    virtual std::int32_t ReadByteString(std::uint8_t* buffer, std::uint32_t size) noexcept = 0;

    virtual void SwapULong(std::uint32_t* value) noexcept;
    virtual void SwapUWord(std::uint16_t* value) noexcept;
    virtual void SwapSLong(std::int32_t* value) noexcept;
    virtual void SwapSWord(std::int16_t* value) noexcept;

    /// The typed writes answer the number of bytes written: the width of the value, or 0.
    virtual std::uint16_t WriteULong(std::uint32_t value) noexcept = 0;
    virtual std::uint16_t WriteUWord(std::uint16_t value) noexcept = 0;
    virtual std::uint16_t WriteUByte(std::uint8_t value) noexcept = 0;
    virtual std::uint16_t WriteSLong(std::int32_t value) noexcept = 0;
    virtual std::uint16_t WriteSWord(std::int16_t value) noexcept = 0;
    virtual std::uint16_t WriteSByte(std::int8_t value) noexcept = 0;
    virtual std::uint16_t WritePointer(const vOBJECT* object) noexcept = 0;
    /// The bytes of a NUL-terminated text, without the NUL; never compressed.
    virtual std::uint32_t WriteByteString(const std::uint8_t* text) noexcept = 0;
    /// The block write: size bytes, as a compression frame when the stream compresses and the frame's data
    /// is shorter. \return size, or the length of the frame's data when a frame was kept; 0 on failure.
    virtual std::uint32_t WriteBlock(const std::uint8_t* data, std::uint32_t size) noexcept = 0;

    /// The moves answer the new position.
    virtual std::uint32_t MoveFromCur(std::int32_t distance) noexcept = 0;
    virtual std::uint32_t MoveFromStart(std::uint32_t position) noexcept = 0;
    virtual std::uint32_t MoveFromEnd(std::int32_t distance) noexcept = 0;
    virtual std::uint32_t CurrentPos() const noexcept = 0;
    virtual std::uint32_t Size() const noexcept = 0;
    /// \return 1 when the position has reached the size.
    virtual int AtEnd() const noexcept = 0;

protected:
    friend class vSHAPE;

    /// Gives the address of the stream's first byte where the stream is in memory, and locks it against
    /// writes until ReleaseStream. \return 1 when it did; otherwise 0 and a null address.
    virtual int LockStream(std::uint8_t** address) noexcept
    {
        *address = nullptr;
        return 0;
    }
    virtual void ReleaseStream() noexcept { }

public:
    /// Reads bytes as they stand, whatever frames they belong to. \return bytes delivered.
    virtual std::uint32_t ReadPlain(std::uint8_t* buffer, std::uint32_t size) noexcept = 0;
    /// Writes bytes as they stand, never compressed: the cheap way to append a prepared record.
    /// \return size, or 0 (a short count on a full disk).
    virtual std::uint32_t WritePlain(const std::uint8_t* data, std::uint32_t size) noexcept = 0;
    /// The next bytes in place, without moving: at most size, and only as many as the stream has in memory
    /// (a memory stream all that are left, a file a part, others none). Valid until the stream is used
    /// again. Pass over them with MoveFromCur.
    virtual std::span<const std::uint8_t> View(std::uint32_t size) noexcept
    {
        static_cast<void>(size);
        return {};
    }

    vSTREAMSTATUS Status() const noexcept { return status_; }
    int Compressed() const noexcept { return compress_; }
    /// \return 1 when the last block read came out of a compression frame.
    int UnCompressed() const noexcept { return read_was_compressed_; }
    void Compress(int on) noexcept { compress_ = on; }
    vSTRING& Name() noexcept { return name_; }
    const vSTRING& Name() const noexcept { return name_; }
    void SwapByteOrder(std::uint8_t on) noexcept { swapped_byte_order_ = on; }

    /// IncCount and DecCount answer the count before the change.
    std::uint16_t IncCount() noexcept { return add_to_count(1); }
    std::uint16_t DecCount() noexcept { return add_to_count(-1); }
    bool NoRef() const noexcept { return static_cast<std::int16_t>(share_count_) <= 0; }

    vSTREAM& operator<<(std::uint32_t value) noexcept { return WriteULong(value), *this; }
    vSTREAM& operator<<(std::int32_t value) noexcept { return WriteSLong(value), *this; }
    vSTREAM& operator<<(std::uint16_t value) noexcept { return WriteUWord(value), *this; }
    vSTREAM& operator<<(std::int16_t value) noexcept { return WriteSWord(value), *this; }
    vSTREAM& operator<<(std::uint8_t value) noexcept { return WriteUByte(value), *this; }
    vSTREAM& operator<<(std::int8_t value) noexcept { return WriteSByte(value), *this; }
    vSTREAM& operator>>(std::uint32_t& value) noexcept { return value = ReadULong(), *this; }
    vSTREAM& operator>>(std::int32_t& value) noexcept { return value = ReadSLong(), *this; }
    vSTREAM& operator>>(std::uint16_t& value) noexcept { return value = ReadUWord(), *this; }
    vSTREAM& operator>>(std::int16_t& value) noexcept { return value = ReadSWord(), *this; }
    vSTREAM& operator>>(std::uint8_t& value) noexcept { return value = ReadUByte(), *this; }
    vSTREAM& operator>>(std::int8_t& value) noexcept { return value = ReadSByte(), *this; }

    /// Copies what remains of source, from its position to its end, to the position of this stream.
    /// Frames are taken apart when this stream does not compress.
    vSTREAM& operator=(vSTREAM& source) noexcept;

protected:
    int SwappedByteOrder() const noexcept { return swapped_byte_order_; }
    void set_status(vSTREAMSTATUS status) noexcept { status_ = status; }

    /// The block read and write that every concrete stream shares, over ReadPlain and WritePlain.
    std::int32_t read_block(std::uint8_t* buffer, std::uint32_t size) noexcept;
    std::uint32_t write_block(const std::uint8_t* data, std::uint32_t size) noexcept;

    /// Copies the rest of source in one chunk, or in chunks of small_chunk bytes when memory is short.
    void copy_rest_of(vSTREAM& source, std::uint32_t small_chunk) noexcept;

private:
    std::uint16_t add_to_count(int change) noexcept
    {
        const auto before = share_count_;
        share_count_ = static_cast<std::uint16_t>((before + change) & 0xFFFF);
        return before;
    }
    std::optional<compression_frame> frame_at(std::uint32_t start) noexcept;
    std::optional<std::span<const std::uint8_t>> fetch(
        std::uint32_t size, vBUFFER<std::uint8_t>& buffer) noexcept;
    bool write_whole(const std::uint8_t* data, std::uint32_t size) noexcept;
    bool decode_into(vSTREAM& target, std::span<const std::uint8_t> imploded) noexcept;

    vSTREAMSTATUS status_ = vSTREAM_OK;
    int compress_ = 0;
    int read_was_compressed_ = 0;
    vSTRING name_;
    std::uint16_t share_count_ = 0;
    int swapped_byte_order_ = 0;
};

} // namespace klv
