#pragma once

#include "klv/base/buffer.h"
#include "klv/platform/system/file.h"
#include "klv/streams/typed_stream.h"

#include <cstdint>
#include <memory>
#include <span>

namespace klv {

/// A stream over a file of the file system. Copies share the open file, which the last of them closes.
class vFILE : public typed_stream<vFILE> {
public:
    static constexpr bool swaps_on_reading = true;

    /// Open modes. Any other value with the top bit set opens an existing file for reading and writing; any
    /// other value without it creates a missing file and keeps the contents of an existing one.
    static constexpr std::uint32_t read_only = 0x80000000;
    static constexpr std::uint32_t read_only_shared = 0x80000001; ///< opened for writing too, writes refused
    static constexpr std::uint32_t truncate = 5;
    static constexpr std::uint32_t temporary = 0xF0F0;

    /// A new temporary file, deleted with the last stream that holds it.
    vFILE() noexcept;
    /// Opens name as mode says; cached gives it a write cache of 1024 bytes.
    explicit vFILE(const vSTRING& name, std::uint32_t mode, int cached = 0) noexcept;
    vFILE(const vFILE& other) noexcept;
    ~vFILE() override;

    using typed_stream::operator=;
    /// Copies what remains of source into this file.
    vFILE& operator=(vFILE& source) noexcept;

    int Close() noexcept override;
    int ReOpen() noexcept override;

    std::uint32_t MoveFromCur(std::int32_t distance) noexcept final;
    std::uint32_t MoveFromStart(std::uint32_t position) noexcept final;
    std::uint32_t MoveFromEnd(std::int32_t distance) noexcept final;
    std::uint32_t CurrentPos() const noexcept final;
    std::uint32_t Size() const noexcept final;
    int AtEnd() const noexcept final;
    std::span<const std::uint8_t> View(std::uint32_t size) noexcept final;

private:
    friend class typed_stream<vFILE>;

    std::uint32_t get(std::uint8_t* to, std::uint32_t size) noexcept
    {
        if (file_ && cache_fill_ == 0 && file_->read_buffered(to, size)) [[likely]]
            return size;
        return get_rest(to, size);
    }
    std::uint32_t put(const std::uint8_t* from, std::uint32_t size) noexcept;

    std::uint32_t get_rest(std::uint8_t* to, std::uint32_t size) noexcept;
    std::uint32_t write_through(const std::uint8_t* from, std::uint32_t size) noexcept;
    std::uint32_t write_cached(const std::uint8_t* from, std::uint32_t size) noexcept;
    bool flush() noexcept;
    void open() noexcept;
    void open_temporary() noexcept;
    bool usable() const noexcept { return file_ && file_->usable(); }
    bool writes_refused() const noexcept { return mode_ == read_only || mode_ == read_only_shared; }
    std::uint32_t move_to(std::int64_t target) noexcept;

    static constexpr std::uint32_t cache_size = 1024;

    std::shared_ptr<system_file> file_; // null when opening failed; unusable after Close
    vBUFFER<std::uint8_t> cache_; // empty when the file is not cached
    // Bytes of the cache that wait to be written, and the place among them of the next write. While there
    // are any, the file's own pointer stands where the first of them belongs.
    std::uint16_t cache_fill_ = 0;
    std::uint16_t cache_position_ = 0;
    std::uint32_t mode_ = 0;
};

} // namespace klv
