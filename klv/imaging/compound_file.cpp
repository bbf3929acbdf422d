#include "klv/imaging/compound_file.h"

#include "klv/base/byte_reader.h"

#include <algorithm>
#include <array>
#include <utility>

namespace klv::imaging {

namespace {

constexpr std::size_t header_bytes = 512;
constexpr std::size_t table_sectors_in_header = 109;
constexpr std::size_t number_bytes = 4;
constexpr std::uint16_t sector_shift = 9;
constexpr std::uint16_t large_sector_shift = 12;
constexpr std::uint32_t small_sector_bytes = 64;
constexpr std::size_t entry_bytes = 128;
constexpr std::size_t name_units = 32;
constexpr std::uint8_t storage_kind = 1;
constexpr std::uint8_t stream_kind = 2;
/// No picture comes near so large a directory.
constexpr std::uint64_t most_directory_bytes = 1 << 22;

/// The sectors of a chain, as far as they are needed. A chain that runs in a circle ends there too.
std::vector<std::uint32_t> chain(
    std::span<const std::uint32_t> table, std::uint32_t first, std::uint64_t needed)
{
    std::vector<std::uint32_t> sectors;
    const std::uint64_t most = std::min<std::uint64_t>(needed, table.size());
    for (std::uint32_t sector = first; sector < table.size() && sectors.size() < most; sector = table[sector])
        sectors.push_back(sector);
    return sectors;
}

std::uint64_t sectors_for(std::uint64_t bytes, std::uint32_t sector_bytes)
{
    return (bytes + sector_bytes - 1) / sector_bytes;
}

void append_numbers(std::span<const std::uint8_t> bytes, std::vector<std::uint32_t>& numbers)
{
    byte_reader in(bytes);
    for (std::size_t i = 0; i < bytes.size() / number_bytes; ++i)
        numbers.push_back(in.u32le());
}

} // namespace

compound_stream::compound_stream(image_io* file, const compound_stream* container, std::uint32_t sector_bytes,
    std::vector<std::uint32_t> sectors, std::uint64_t declared_size)
    : file_(file)
    , container_(container)
    , sector_bytes_(sector_bytes)
    , sectors_(std::move(sectors))
    , size_(std::min<std::uint64_t>(declared_size, std::uint64_t{sectors_.size()} * sector_bytes))
{
}

bool compound_stream::read(std::uint64_t offset, std::size_t count, std::vector<std::uint8_t>& bytes) const
{
    if (offset > size_ || count > size_ - offset)
        return false;
    bytes.resize(count);
    return read_into(offset, bytes);
}

bool compound_stream::read_into(std::uint64_t offset, std::span<std::uint8_t> bytes) const
{
    if (offset > size_ || bytes.size() > size_ - offset)
        return false;
    while (!bytes.empty()) {
        const auto index = static_cast<std::size_t>(offset / sector_bytes_);
        const std::uint64_t within = offset % sector_bytes_;
        // Sectors that lie one behind the other are read at once.
        std::size_t run = 1;
        while (run * sector_bytes_ - within < bytes.size() && sectors_[index + run] == sectors_[index] + run)
            ++run;
        const auto count
            = static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), run * sector_bytes_ - within));
        if (!read_sectors(sectors_[index], within, bytes.first(count)))
            return false;
        offset += count;
        bytes = bytes.subspan(count);
    }
    return true;
}

bool compound_stream::read_sectors(
    std::uint32_t first, std::uint64_t offset, std::span<std::uint8_t> bytes) const
{
    const std::uint64_t start = std::uint64_t{first} * sector_bytes_ + offset;
    if (container_)
        return container_->read_into(start, bytes);
    const std::uint64_t behind_header = start + sector_bytes_;
    return behind_header <= INT32_MAX && file_->seek(static_cast<std::uint32_t>(behind_header))
        && file_->read(bytes) == bytes.size();
}

struct compound_file::header {
    std::uint16_t sector_shift;
    std::uint32_t table_sectors;
    std::uint32_t directory;
    std::uint32_t small_stream_limit;
    std::uint32_t small_table;
    std::uint32_t more_table_sectors; ///< where the numbers beyond those in the header are

    static header read(byte_reader& in)
    {
        header head{};
        in.skip(8 + 16 + 2 + 2 + 2); // signature, class, versions, byte order
        head.sector_shift = in.u16le();
        in.skip(2 + 6 + 4); // small sectors, reserved, sectors of the directory
        head.table_sectors = in.u32le();
        head.directory = in.u32le();
        in.skip(4); // transaction
        head.small_stream_limit = in.u32le();
        head.small_table = in.u32le();
        in.skip(4); // its sectors
        head.more_table_sectors = in.u32le();
        in.skip(4); // their sectors
        return head;
    }
};

struct compound_file::entry {
    std::array<std::uint16_t, name_units> name{}; ///< UTF-16, zero behind the end
    std::uint8_t kind = 0;
    std::uint32_t left = 0;
    std::uint32_t right = 0;
    std::uint32_t contents = 0;
    std::uint32_t first_sector = 0;
    std::uint32_t size = 0;

    static entry read(byte_reader in)
    {
        entry found;
        for (std::uint16_t& unit : found.name)
            unit = in.u16le();
        in.skip(2); // length of the name
        found.kind = in.u8();
        in.skip(1); // colour of the node
        found.left = in.u32le();
        found.right = in.u32le();
        found.contents = in.u32le();
        in.skip(16 + 4 + 8 + 8); // class, state, times
        found.first_sector = in.u32le();
        found.size = in.u32le();
        return found;
    }
    [[nodiscard]] bool is_named(std::string_view wanted) const
    {
        return wanted.size() < name.size() && name[wanted.size()] == 0
            && std::equal(wanted.begin(), wanted.end(), name.begin(),
                [](char a, std::uint16_t b) { return static_cast<unsigned char>(a) == b; });
    }
};

bool compound_file::open(image_io& in)
{
    in_ = &in;
    std::array<std::uint8_t, header_bytes> bytes{};
    if (!in.seek(0) || in.read(bytes) != bytes.size())
        return false;
    byte_reader reader(bytes);
    const header head = header::read(reader);
    if (head.sector_shift != sector_shift && head.sector_shift != large_sector_shift)
        return false;
    sector_bytes_ = 1U << head.sector_shift;
    small_stream_limit_ = head.small_stream_limit;
    append_numbers(reader.bytes(table_sectors_in_header * number_bytes), table_);
    if (!read_table(head))
        return false;
    const compound_stream directory = stream_at(head.directory, most_directory_bytes);
    if (directory.size() < entry_bytes
        || !directory.read(0, static_cast<std::size_t>(directory.size()), directory_))
        return false;
    small_table_ = read_numbers(stream_at(head.small_table, UINT32_MAX));
    const entry top = entry_at(0);
    small_sectors_ = stream_at(top.first_sector, top.size);
    return true;
}

/// Reads the table of which table_ holds the numbers of the first sectors.
bool compound_file::read_table(const header& head)
{
    const std::uint64_t file_sectors = sectors_for(in_->size(), sector_bytes_);
    const std::uint64_t wanted = std::min<std::uint64_t>(head.table_sectors, file_sectors);
    std::vector<std::uint32_t> places = std::exchange(table_, {});
    // Sectors of further numbers end with the number of the next such sector.
    std::uint32_t next = head.more_table_sectors;
    while (places.size() < wanted && next < file_sectors) {
        std::vector<std::uint8_t> bytes;
        if (!compound_stream(*in_, sector_bytes_, {next}, sector_bytes_).read(0, sector_bytes_, bytes))
            return false;
        append_numbers(bytes, places);
        next = places.back();
        places.pop_back();
    }
    places.resize(static_cast<std::size_t>(std::min<std::uint64_t>(places.size(), wanted)));
    const std::uint64_t table_bytes = std::uint64_t{places.size()} * sector_bytes_;
    table_ = read_numbers(compound_stream(*in_, sector_bytes_, std::move(places), table_bytes));
    table_.resize(static_cast<std::size_t>(std::min<std::uint64_t>(table_.size(), file_sectors)));
    return !table_.empty();
}

std::vector<std::uint32_t> compound_file::read_numbers(const compound_stream& stream) const
{
    std::vector<std::uint32_t> numbers;
    std::vector<std::uint8_t> bytes;
    for (std::uint64_t at = 0; at < stream.size() && stream.read(at, sector_bytes_, bytes);
         at += sector_bytes_)
        append_numbers(bytes, numbers);
    return numbers;
}

compound_stream compound_file::stream_at(std::uint32_t first_sector, std::uint64_t size) const
{
    return {*in_, sector_bytes_, chain(table_, first_sector, sectors_for(size, sector_bytes_)), size};
}

std::size_t compound_file::entries() const { return directory_.size() / entry_bytes; }

compound_file::entry compound_file::entry_at(std::uint32_t number) const
{
    return entry::read(byte_reader(std::span(directory_).subspan(number * entry_bytes, entry_bytes)));
}

compound_file::storage compound_file::root() const { return {entry_at(0).contents}; }

/// Goes through the whole tree: writers disagree about its order.
std::optional<compound_file::entry> compound_file::find(
    storage parent, std::string_view name, std::uint8_t kind) const
{
    std::vector<bool> seen(entries());
    std::vector<std::uint32_t> ahead{parent.contents};
    while (!ahead.empty()) {
        const std::uint32_t number = ahead.back();
        ahead.pop_back();
        if (number >= seen.size() || seen[number])
            continue;
        seen[number] = true;
        const entry found = entry_at(number);
        if (found.kind == kind && found.is_named(name))
            return found;
        ahead.insert(ahead.end(), {found.left, found.right});
    }
    return std::nullopt;
}

std::optional<compound_file::storage> compound_file::find_storage(storage parent, std::string_view name) const
{
    const auto found = find(parent, name, storage_kind);
    return found ? std::optional(storage{found->contents}) : std::nullopt;
}

std::optional<compound_stream> compound_file::find_stream(storage parent, std::string_view name) const
{
    const auto found = find(parent, name, stream_kind);
    if (!found)
        return std::nullopt;
    if (found->size >= small_stream_limit_)
        return stream_at(found->first_sector, found->size);
    const std::uint64_t needed = sectors_for(found->size, small_sector_bytes);
    return compound_stream(
        small_sectors_, small_sector_bytes, chain(small_table_, found->first_sector, needed), found->size);
}

} // namespace klv::imaging
