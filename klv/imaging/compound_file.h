#pragma once

#include "klv/imaging/image_io.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace klv::imaging {

/// A stream of a compound file: sectors that lie anywhere in it.
class compound_stream {
public:
    compound_stream() = default;
    /// In sectors of the file itself, the first of which is its header.
    compound_stream(image_io& file, std::uint32_t sector_bytes, std::vector<std::uint32_t> sectors,
        std::uint64_t declared_size)
        : compound_stream(&file, nullptr, sector_bytes, std::move(sectors), declared_size)
    {
    }
    /// In small sectors of another stream, which must outlive this one.
    compound_stream(const compound_stream& container, std::uint32_t sector_bytes,
        std::vector<std::uint32_t> sectors, std::uint64_t declared_size)
        : compound_stream(nullptr, &container, sector_bytes, std::move(sectors), declared_size)
    {
    }

    /// Bytes that there are sectors for.
    [[nodiscard]] std::uint64_t size() const { return size_; }
    /// Reads count bytes at an offset; false when they are not there.
    [[nodiscard]] bool read(std::uint64_t offset, std::size_t count, std::vector<std::uint8_t>& bytes) const;

private:
    compound_stream(image_io* file, const compound_stream* container, std::uint32_t sector_bytes,
        std::vector<std::uint32_t> sectors, std::uint64_t declared_size);
    [[nodiscard]] bool read_into(std::uint64_t offset, std::span<std::uint8_t> bytes) const;
    [[nodiscard]] bool read_sectors(
        std::uint32_t first, std::uint64_t offset, std::span<std::uint8_t> bytes) const;

    image_io* file_ = nullptr;
    const compound_stream* container_ = nullptr;
    std::uint32_t sector_bytes_ = 0;
    std::vector<std::uint32_t> sectors_;
    std::uint64_t size_ = 0;
};

/// A compound file ([MS-CFB]): storages and streams in one file, as a file system has directories and files.
/// The file is cut into sectors, which a table chains together.
class compound_file {
public:
    /// A storage, by the directory entry from which the tree of its contents hangs.
    struct storage {
        std::uint32_t contents;
    };

    compound_file() = default;
    compound_file(const compound_file&) = delete;
    compound_file& operator=(const compound_file&) = delete;

    /// Reads tables and directory; false when there are none. in must outlive this and every stream.
    [[nodiscard]] bool open(image_io& in);

    [[nodiscard]] storage root() const;
    [[nodiscard]] std::optional<storage> find_storage(storage parent, std::string_view name) const;
    /// The stream must not outlive this.
    [[nodiscard]] std::optional<compound_stream> find_stream(storage parent, std::string_view name) const;

private:
    struct header;
    struct entry;

    [[nodiscard]] bool read_table(const header& head);
    [[nodiscard]] std::vector<std::uint32_t> read_numbers(const compound_stream& stream) const;
    [[nodiscard]] compound_stream stream_at(std::uint32_t first_sector, std::uint64_t size) const;
    [[nodiscard]] std::size_t entries() const;
    [[nodiscard]] entry entry_at(std::uint32_t number) const;
    [[nodiscard]] std::optional<entry> find(storage parent, std::string_view name, std::uint8_t kind) const;

    image_io* in_ = nullptr;
    std::uint32_t sector_bytes_ = 0;
    std::uint32_t small_stream_limit_ = 0;
    std::vector<std::uint32_t> table_; ///< the sector that follows each
    std::vector<std::uint32_t> small_table_;
    compound_stream small_sectors_;
    std::vector<std::uint8_t> directory_;
};

} // namespace klv::imaging
