#include "klv/gdi/state/objects.h"

#include <algorithm>
#include <cstring>

namespace klv::gdi {

namespace {

// A token is generation << slot_bits | slot. Generations start at 1, so tokens never look like the small
// numbers that some functions answer in the place of a handle.
constexpr unsigned slot_bits = 20;
constexpr std::uint32_t slot_mask = (1U << slot_bits) - 1;
constexpr std::uint32_t last_generation = (1U << (32 - slot_bits)) - 1;

struct slot {
    std::shared_ptr<gdi_object> object;
    std::uint32_t generation = 1;
};

struct object_table {
    std::vector<slot> slots;
    std::vector<std::uint32_t> free;
    std::size_t used = 0;
};

// Never destroyed: objects may be released by destructors of other static objects.
object_table& table()
{
    static auto* const instance = new object_table;
    return *instance;
}

slot* find_slot(std::uint32_t token)
{
    auto& slots = table().slots;
    const std::uint32_t index = token & slot_mask;
    if (index >= slots.size() || slots[index].generation != token >> slot_bits || !slots[index].object)
        return nullptr;
    return &slots[index];
}

} // namespace

INT copy_description(const void* from, std::size_t from_size, INT size, void* buffer)
{
    if (buffer == nullptr)
        return static_cast<INT>(from_size);
    if (size <= 0)
        return 0;
    const std::size_t bytes = std::min(from_size, static_cast<std::size_t>(size));
    std::memcpy(buffer, from, bytes);
    return static_cast<INT>(bytes);
}

std::uint32_t register_object(std::shared_ptr<gdi_object> object) noexcept
{
    return guarded([&]() -> std::uint32_t {
        auto& t = table();
        if (!object)
            return 0;
        if (t.free.empty()) {
            if (t.slots.size() > slot_mask)
                return 0;
            // Room for the slot's return first, so that removing an object never allocates.
            t.free.reserve(t.slots.size() + 1);
            t.slots.emplace_back();
            t.free.push_back(static_cast<std::uint32_t>(t.slots.size() - 1));
        }
        const std::uint32_t index = t.free.back();
        t.free.pop_back();
        slot& s = t.slots[index];
        object->token = s.generation << slot_bits | index;
        s.object = std::move(object);
        ++t.used;
        return s.object->token;
    });
}

const std::shared_ptr<gdi_object>* find_object(std::uint32_t token) noexcept
{
    const slot* s = find_slot(token);
    return s == nullptr ? nullptr : &s->object;
}

bool remove_object(std::uint32_t token) noexcept
{
    slot* s = find_slot(token);
    if (s == nullptr)
        return false;
    const auto released = std::move(s->object);
    s->object.reset();
    s->generation = s->generation == last_generation ? 1 : s->generation + 1;
    table().free.push_back(token & slot_mask);
    --table().used;
    return true;
}

std::size_t object_count() noexcept { return table().used; }

} // namespace klv::gdi
