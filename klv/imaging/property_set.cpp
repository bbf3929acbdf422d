#include "klv/imaging/property_set.h"

#include "klv/base/byte_reader.h"

#include <algorithm>

namespace klv::imaging {

namespace {

constexpr std::size_t bytes_before_section_offset = 28 + 16;
constexpr std::size_t entry_bytes = 8;

enum value_type : std::uint32_t { type_i4 = 3, type_ui4 = 19, type_blob = 65 };

} // namespace

property_set::property_set(std::span<const std::uint8_t> stream)
{
    byte_reader in(stream);
    in.skip(bytes_before_section_offset);
    in.seek(in.u32le());
    section_ = stream.subspan(in.position());
    byte_reader section(section_);
    section.skip(4); // size
    const std::uint32_t count = section.u32le();
    if (!section.holds(count, entry_bytes))
        return;
    entries_.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint32_t id = section.u32le();
        entries_.push_back({id, section.u32le()});
    }
    std::ranges::stable_sort(entries_, {}, &entry::id);
}

std::span<const std::uint8_t> property_set::value(std::uint32_t id) const
{
    const auto found = std::ranges::lower_bound(entries_, id, {}, &entry::id);
    if (found == entries_.end() || found->id != id || found->offset > section_.size())
        return {};
    return section_.subspan(found->offset);
}

std::uint32_t property_set::number(std::uint32_t id, std::uint32_t fallback) const
{
    byte_reader in(value(id));
    const std::uint32_t type = in.u32le();
    const std::uint32_t number = in.u32le();
    return in.ok() && (type == type_i4 || type == type_ui4) ? number : fallback;
}

std::span<const std::uint8_t> property_set::blob(std::uint32_t id) const
{
    byte_reader in(value(id));
    if (in.u32le() != type_blob)
        return {};
    const std::uint32_t size = in.u32le();
    return in.bytes(size);
}

} // namespace klv::imaging
