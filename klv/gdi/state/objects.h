#pragma once

#include "klv/base/types.h"

#include <cstdint>
#include <memory>
#include <new>
#include <vector>

/// The table behind the handles. A handle is a 32-bit token (slot and generation), never an address, so a
/// stale or foreign one is recognised. The table and every context that selected an object share it: an
/// object that is deleted while selected lives until it is replaced.
namespace klv::gdi {

enum class object_kind : std::uint8_t { pen, brush, font, bitmap, region, palette, context };

/// What a handle stands for.
struct gdi_object {
    explicit gdi_object(object_kind k)
        : kind(k)
    {
    }
    virtual ~gdi_object() = default;
    gdi_object(const gdi_object&) = delete;
    gdi_object& operator=(const gdi_object&) = delete;

    /// GetObjectA: copies the description, or answers its size when buffer is null.
    virtual INT describe(INT size, void* buffer) const
    {
        (void)size, (void)buffer;
        return 0;
    }

    const object_kind kind;
    bool stock = false; ///< never deleted
    std::uint32_t token = 0; ///< its handle, 0 before it is in the table
};

/// Copies a description for GetObjectA: all of it, or as much as size holds.
INT copy_description(const void* from, std::size_t from_size, INT size, void* buffer);

/// Puts an object into the table. \return its token, 0 when memory is out.
std::uint32_t register_object(std::shared_ptr<gdi_object> object) noexcept;
/// Null for a token that is not (or no longer) in use.
const std::shared_ptr<gdi_object>* find_object(std::uint32_t token) noexcept;
bool remove_object(std::uint32_t token) noexcept;
/// Handles in use; for tests that look for leaks.
std::size_t object_count() noexcept;

template <class Handle> std::uint32_t token_of(Handle handle)
{
    const auto value = reinterpret_cast<std::uintptr_t>(handle);
    return value > 0xFFFFFFFFU ? 0 : static_cast<std::uint32_t>(value);
}
template <class Handle> Handle handle_of(std::uint32_t token)
{
    return reinterpret_cast<Handle>(static_cast<std::uintptr_t>(token));
}

/// The object of a handle when it has Object's kind, else null. Object names its kind as kind_id.
template <class Object, class Handle> std::shared_ptr<Object> find_shared(Handle handle)
{
    const auto* found = find_object(token_of(handle));
    if (found == nullptr || (*found)->kind != Object::kind_id)
        return nullptr;
    return std::static_pointer_cast<Object>(*found);
}
template <class Object, class Handle> Object* find(Handle handle)
{
    const auto* found = find_object(token_of(handle));
    if (found == nullptr || (*found)->kind != Object::kind_id)
        return nullptr;
    return static_cast<Object*>(found->get());
}

/// Runs the body of a public function: where memory runs out, the answer is 0 (or null).
template <class Body> auto guarded(Body&& body) noexcept -> decltype(body())
{
    try {
        return body();
    } catch (const std::bad_alloc&) {
        return decltype(body()){};
    }
}

/// Makes an object and answers its handle.
template <class Handle, class Object, class... Arguments> Handle make_object(Arguments&&... arguments)
{
    return handle_of<Handle>(
        register_object(std::make_shared<Object>(std::forward<Arguments>(arguments)...)));
}

} // namespace klv::gdi
