#pragma once

#include "klv/core/object.h"

#include <cstdint>

namespace klv {

/// Doubly linked list of untyped pointers with a cursor. The items are not owned; those that Delete and
/// DeleteAll free must come from vMemAlloc. Items are told apart by their address.
class vPTRLIST : public vOBJECT {
public:
    vPTRLIST() noexcept = default;
    vPTRLIST(const vPTRLIST&) = delete;
    vPTRLIST& operator=(const vPTRLIST&) = delete;
    ~vPTRLIST() { RemoveAll(); }

    /// The lookups answer null when there is no such item; with a nonzero move the cursor goes to it.
    void* First(int move) noexcept;
    void* Last(int move) noexcept;
    [[nodiscard]] void* Current() const noexcept;
    void* Next(int move) noexcept;
    void* GetAt(std::uint16_t i, int move) noexcept;
    [[nodiscard]] std::int32_t NoItems() const noexcept { return count_; }
    /// \return 1 when item is held
    [[nodiscard]] int Search(const void* item) const noexcept { return find(item) != nullptr; }

    /// The insertions put the cursor on the new item. \return 1, or 0 when memory is out (or, for the two
    /// relative ones, `existing` is not held) and nothing changes.
    int Append(void* item) noexcept;
    int Prepend(void* item) noexcept;
    /// Before the first held item b with compare(item, b) <= 0, else at the end.
    int InsertInOrder(void* item, int (*compare)(void* a, void* b)) noexcept;
    int InsertAfter(void* item, void* existing) noexcept;
    int InsertBefore(void* item, void* existing) noexcept;

    /// Takes the item out; the cursor goes to the one before it, else to the one after.
    /// \return 1, or 0 when the item is not held
    int Remove(void* item) noexcept;
    /// The same, and frees the item.
    int Delete(void* item) noexcept;
    void RemoveAll() noexcept { clear(false); }
    void DeleteAll() noexcept { clear(true); }

private:
    struct node;

    [[nodiscard]] node* find(const void* item) const noexcept;
    void* visit(node* at, int move) noexcept;
    int insert(void* item, node* previous, node* next) noexcept;
    void unlink(node* at, bool free_item) noexcept;
    void clear(bool free_items) noexcept;

    node* first_ = nullptr;
    node* last_ = nullptr;
    node* current_ = nullptr;
    std::int32_t count_ = 0;
};

} // namespace klv
