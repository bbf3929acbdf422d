#pragma once

#include "klv/base/byte_writer.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <span>
#include <string>
#include <utility>
#include <vector>

/// FlashPix files: compound files made of the parts that a picture needs.
namespace klv::test::flashpix {

using file_bytes = std::vector<std::uint8_t>;

inline constexpr std::uint32_t no_sector = 0xFFFFFFFF;
inline constexpr std::uint32_t end_of_chain = 0xFFFFFFFE;
/// Shorter streams lie in small sectors.
inline constexpr std::size_t small_stream_limit = 4096;

/// How a compound file is laid out.
struct compound_layout {
    std::uint16_t sector_shift = 9;
    bool small_streams = false; ///< else streams are padded to 4096 bytes
    std::size_t unused_sectors = 0;
};

/// A compound file: the directory, the streams, unused sectors, the table of sectors, and the numbers of its
/// sectors that have no room in the header.
class compound_builder {
public:
    explicit compound_builder(compound_layout layout = {})
        : layout_(layout)
    {
        add("Root Entry", root_type, none, {});
    }

    /// Adds a storage to a storage, the root is number 0.
    std::uint32_t storage(const std::string& name, std::uint32_t parent)
    {
        return add(name, storage_type, parent, {});
    }
    std::uint32_t stream(const std::string& name, std::uint32_t parent, file_bytes bytes)
    {
        if (!layout_.small_streams)
            bytes.resize(std::max(bytes.size(), small_stream_limit));
        return add(name, stream_type, parent, std::move(bytes));
    }
    /// Makes one entry the neighbour of another, whatever that does to the tree.
    void link(std::uint32_t number, std::uint32_t neighbour) { entries_[number].next = neighbour; }

    file_bytes bytes() const
    {
        sectors file{std::size_t{1} << layout_.sector_shift, {}, {}};
        sectors small{64, {}, {}};
        file.add(file_bytes(entries_.size() * 128)); // the directory, once the streams have their places
        byte_writer directory;
        for (const entry& e : entries_)
            if (e.type != root_type)
                write_entry(directory, e, (e.bytes.size() < small_stream_limit ? small : file).add(e.bytes));
        byte_writer small_table;
        for (const std::uint32_t next : small.table)
            small_table.u32le(next);
        const std::uint32_t small_table_at = file.add(small_table.span());
        entry root = entries_[0];
        root.bytes = small.bytes;
        byte_writer first_entry;
        write_entry(first_entry, root, file.add(small.bytes));
        std::copy_n(first_entry.data(), 128, file.bytes.data());
        std::copy_n(directory.data(), directory.size(), file.bytes.data() + 128);
        file.add(file_bytes(layout_.unused_sectors * file.size));
        return with_table(file, small_table_at);
    }

private:
    static constexpr std::uint8_t storage_type = 1;
    static constexpr std::uint8_t stream_type = 2;
    static constexpr std::uint8_t root_type = 5;
    static constexpr std::uint32_t none = 0xFFFFFFFF;
    static constexpr std::size_t table_sectors_in_header = 109;
    struct entry {
        std::string name;
        std::uint8_t type;
        file_bytes bytes;
        std::uint32_t next = none;
        std::uint32_t child = none;
    };
    struct sectors {
        std::size_t size;
        file_bytes bytes;
        std::vector<std::uint32_t> table;

        std::uint32_t add(std::span<const std::uint8_t> stream)
        {
            if (stream.empty())
                return end_of_chain;
            const auto first = static_cast<std::uint32_t>(table.size());
            bytes.insert(bytes.end(), stream.begin(), stream.end());
            bytes.resize((bytes.size() + size - 1) / size * size);
            while (table.size() < bytes.size() / size)
                table.push_back(static_cast<std::uint32_t>(table.size() + 1));
            table.back() = end_of_chain;
            return first;
        }
    };

    std::uint32_t add(const std::string& name, std::uint8_t type, std::uint32_t parent, file_bytes bytes)
    {
        const auto number = static_cast<std::uint32_t>(entries_.size());
        entries_.push_back({name, type, std::move(bytes)});
        if (parent != none) {
            entries_[number].next = entries_[parent].child;
            entries_[parent].child = number;
        }
        return number;
    }
    static void write_entry(byte_writer& out, const entry& e, std::uint32_t start)
    {
        for (std::size_t i = 0; i < 32; ++i)
            out.u16le(i < e.name.size() ? static_cast<std::uint8_t>(e.name[i]) : 0);
        out.u16le(static_cast<std::uint16_t>(2 * e.name.size() + 2));
        out.u8(e.type);
        out.u8(1);
        out.u32le(none);
        out.u32le(e.next);
        out.u32le(e.child);
        out.fill(16 + 4 + 16);
        out.u32le(start);
        out.u32le(static_cast<std::uint32_t>(e.bytes.size()));
        out.u32le(0);
    }
    file_bytes with_table(sectors& file, std::uint32_t small_table_at) const
    {
        const std::size_t numbers = file.size / 4;
        const std::size_t table_at = file.table.size();
        const auto more = [&](std::size_t count) {
            return count <= table_sectors_in_header
                ? 0
                : (count - table_sectors_in_header + numbers - 2) / (numbers - 1);
        };
        std::size_t count = 1;
        while (count * numbers < table_at + count + more(count))
            ++count;
        file.table.resize(count * numbers, no_sector);
        byte_writer out;
        write_header(out, file, small_table_at, table_at, count, more(count));
        out.bytes(file.bytes);
        for (const std::uint32_t next : file.table)
            out.u32le(next);
        for (std::size_t i = table_sectors_in_header; i < count; ++i) {
            out.u32le(static_cast<std::uint32_t>(table_at + i));
            if ((i - table_sectors_in_header + 2) % numbers == 0)
                out.u32le(static_cast<std::uint32_t>(out.size() / file.size));
        }
        out.align(file.size);
        return {out.span().begin(), out.span().end()};
    }
    void write_header(byte_writer& out, const sectors& file, std::uint32_t small_table_at,
        std::size_t table_at, std::size_t table_sectors, std::size_t more_sectors) const
    {
        for (const int byte : {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1})
            out.u8(static_cast<std::uint8_t>(byte));
        out.fill(16);
        for (const std::uint16_t word :
            std::array<std::uint16_t, 5>{0x3E, 3, 0xFFFE, layout_.sector_shift, 6})
            out.u16le(word);
        out.fill(6 + 4);
        out.u32le(static_cast<std::uint32_t>(table_sectors));
        out.u32le(0); // first sector of the directory
        out.u32le(0);
        out.u32le(static_cast<std::uint32_t>(small_stream_limit));
        out.u32le(small_table_at);
        out.u32le(0);
        out.u32le(more_sectors == 0 ? end_of_chain : static_cast<std::uint32_t>(table_at + table_sectors));
        out.u32le(static_cast<std::uint32_t>(more_sectors));
        for (std::size_t i = 0; i < table_sectors_in_header; ++i)
            out.u32le(i < table_sectors ? static_cast<std::uint32_t>(table_at + i) : no_sector);
        out.align(file.size);
    }

    compound_layout layout_;
    std::vector<entry> entries_;
};

struct tile {
    std::uint32_t compression;
    std::uint32_t subtype;
    file_bytes bytes;
};

inline constexpr std::uint32_t tile_side = 16;
/// Both streams of a resolution and a property set begin so.
inline constexpr std::size_t stream_header = 28;

inline file_bytes contents(std::uint32_t first_channel)
{
    byte_writer out;
    out.fill(stream_header + 16);
    out.u32le(48); // the only section
    out.u32le(0);
    out.u32le(1);
    out.u32le(0x02000002);
    out.u32le(16);
    out.u32le(65); // a blob
    out.u32le(20);
    out.u32le(1);
    out.u32le(3);
    for (std::uint32_t i = 0; i < 3; ++i)
        out.u32le(first_channel + i);
    return {out.span().begin(), out.span().end()};
}

inline void add_level(compound_builder& file, std::uint32_t number, std::uint32_t width, std::uint32_t height,
    std::uint32_t channels, const std::vector<tile>& tiles)
{
    byte_writer header;
    byte_writer data;
    header.fill(stream_header);
    data.fill(stream_header);
    for (const auto value : {std::uint32_t{36}, width, height, static_cast<std::uint32_t>(tiles.size()),
             tile_side, tile_side, channels, std::uint32_t{36}, std::uint32_t{16}})
        header.u32le(value);
    for (const tile& each : tiles) {
        header.u32le(static_cast<std::uint32_t>(data.size() - stream_header));
        header.u32le(static_cast<std::uint32_t>(each.bytes.size()));
        header.u32le(each.compression);
        header.u32le(each.subtype);
        data.bytes(each.bytes);
    }
    std::array<char, 32> name{};
    std::snprintf(name.data(), name.size(), "Resolution %04u", number);
    const std::uint32_t storage = file.storage(name.data(), 0);
    file.stream("Subimage 0000 Header", storage, {header.span().begin(), header.span().end()});
    file.stream("Subimage 0000 Data", storage, {data.span().begin(), data.span().end()});
}

} // namespace klv::test::flashpix
