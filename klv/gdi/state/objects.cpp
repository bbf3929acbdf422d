#include "klv/gdi/state/objects.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cstring>
#include <mutex>
#include <vector>

namespace klv::gdi {

namespace {

// A token is generation << slot_bits | slot. Generations start at 1, so tokens never look like the small
// numbers that some functions answer in the place of a handle.
constexpr unsigned slot_bits = 20;
constexpr std::uint32_t slot_mask = (1U << slot_bits) - 1;
constexpr std::uint32_t last_generation = (1U << (32 - slot_bits)) - 1;

struct slot {
    std::shared_ptr<gdi_object> object;
    std::uint32_t generation = 1; ///< of the next object
    std::atomic<std::uint32_t> live = 0; ///< generation of the object that is here; 0 while there is none
};

// Slots stand in chunks that never move, each twice as long as the one before, so that a look-up takes no
// lock: it meets a slot whose object is wholly there, or one that is not the token's. All changes are made
// under the mutex. An object is looked up by the thread that may remove it and by no other.
class object_table {
public:
    [[nodiscard]] slot* find(std::uint32_t token)
    {
        const std::uint32_t index = token & slot_mask;
        const auto [chunk, offset] = place_of(index);
        slot* const first = chunks_[chunk].load(std::memory_order_acquire);
        const std::uint32_t generation = token >> slot_bits;
        if (first == nullptr || generation == 0
            || first[offset].live.load(std::memory_order_acquire) != generation)
            return nullptr;
        return &first[offset];
    }

    std::uint32_t add(std::shared_ptr<gdi_object> object)
    {
        const std::lock_guard lock(mutex_);
        if (free_.empty() && !add_slot())
            return 0;
        const std::uint32_t index = free_.back();
        free_.pop_back();
        slot& s = at(index);
        object->token = s.generation << slot_bits | index;
        s.object = std::move(object);
        s.live.store(s.generation, std::memory_order_release);
        return s.object->token;
    }

    [[nodiscard]] std::shared_ptr<gdi_object> remove(std::uint32_t token)
    {
        const std::lock_guard lock(mutex_);
        slot* const s = find(token);
        if (s == nullptr)
            return nullptr;
        s->live.store(0, std::memory_order_release);
        s->generation = s->generation == last_generation ? 1 : s->generation + 1;
        free_.push_back(token & slot_mask);
        return std::move(s->object);
    }

    [[nodiscard]] std::size_t used()
    {
        const std::lock_guard lock(mutex_);
        return count_ - free_.size();
    }

private:
    static constexpr unsigned first_chunk_bits = 8;
    static constexpr unsigned chunk_count = slot_bits - first_chunk_bits + 1;

    struct place {
        std::size_t chunk;
        std::size_t offset;
    };
    /// Chunk 0 holds the slots below 2^first_chunk_bits, every other as many as all before it.
    static place place_of(std::uint32_t index)
    {
        const auto bits = static_cast<unsigned>(std::bit_width(index >> first_chunk_bits));
        return {bits, bits == 0 ? index : index - (1U << (first_chunk_bits + bits - 1))};
    }
    static std::size_t chunk_size(std::size_t chunk)
    {
        return std::size_t{1} << (first_chunk_bits + (chunk == 0 ? 0 : chunk - 1));
    }

    slot& at(std::uint32_t index)
    {
        const auto [chunk, offset] = place_of(index);
        return chunks_[chunk].load(std::memory_order_relaxed)[offset];
    }

    bool add_slot()
    {
        if (count_ > slot_mask)
            return false;
        // Room for the slot's return first, so that removing an object never allocates.
        if (free_.capacity() <= count_)
            free_.reserve(std::max<std::size_t>(2 * free_.capacity(), chunk_size(0)));
        const auto [chunk, offset] = place_of(count_);
        if (offset == 0)
            chunks_[chunk].store(new slot[chunk_size(chunk)], std::memory_order_release);
        free_.push_back(count_++);
        return true;
    }

    std::mutex mutex_;
    std::array<std::atomic<slot*>, chunk_count> chunks_{};
    std::vector<std::uint32_t> free_;
    std::uint32_t count_ = 0;
};

// Never destroyed: objects may be released by destructors of other static objects.
object_table& table()
{
    static auto* const instance = new object_table;
    return *instance;
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
    return guarded([&] { return object ? table().add(std::move(object)) : 0; });
}

const std::shared_ptr<gdi_object>* find_object(std::uint32_t token) noexcept
{
    const slot* s = table().find(token);
    return s == nullptr ? nullptr : &s->object;
}

bool remove_object(std::uint32_t token) noexcept
{
    // The object goes when the table is no longer locked: its own end may remove others.
    return table().remove(token) != nullptr;
}

std::size_t object_count() noexcept { return table().used(); }

} // namespace klv::gdi
