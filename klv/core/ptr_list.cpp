#include "klv/core/ptr_list.h"

#include "klv/base/memory.h"

namespace klv {

struct vPTRLIST::node : vOBJECT {
    void* item = nullptr;
    node* previous = nullptr;
    node* next = nullptr;
    bool owns_item = false;

    ~node()
    {
        if (owns_item)
            vMemFree(item);
    }
};

vPTRLIST::node* vPTRLIST::find(const void* item) const noexcept
{
    node* at = first_;
    while (at && at->item != item)
        at = at->next;
    return at;
}

void* vPTRLIST::visit(node* at, int move) noexcept
{
    if (!at)
        return nullptr;
    if (move)
        current_ = at;
    return at->item;
}

void* vPTRLIST::First(int move) noexcept { return visit(first_, move); }
void* vPTRLIST::Last(int move) noexcept { return visit(last_, move); }
void* vPTRLIST::Current() const noexcept { return current_ ? current_->item : nullptr; }
void* vPTRLIST::Next(int move) noexcept { return visit(current_ ? current_->next : nullptr, move); }

void* vPTRLIST::GetAt(std::uint16_t i, int move) noexcept
{
    node* at = first_;
    for (int left = i; at && left > 0; --left)
        at = at->next;
    return visit(at, move);
}

int vPTRLIST::insert(void* item, node* previous, node* next) noexcept
{
    auto* const fresh = new node;
    if (!fresh)
        return 0;
    fresh->item = item;
    fresh->previous = previous;
    fresh->next = next;
    (previous ? previous->next : first_) = fresh;
    (next ? next->previous : last_) = fresh;
    current_ = fresh;
    ++count_;
    return 1;
}

int vPTRLIST::Append(void* item) noexcept { return insert(item, last_, nullptr); }
int vPTRLIST::Prepend(void* item) noexcept { return insert(item, nullptr, first_); }

int vPTRLIST::InsertInOrder(void* item, int (*compare)(void* a, void* b)) noexcept
{
    node* next = first_;
    while (next && compare(item, next->item) > 0)
        next = next->next;
    return insert(item, next ? next->previous : last_, next);
}

int vPTRLIST::InsertAfter(void* item, void* existing) noexcept
{
    node* const at = find(existing);
    return at ? insert(item, at, at->next) : 0;
}

int vPTRLIST::InsertBefore(void* item, void* existing) noexcept
{
    node* const at = find(existing);
    return at ? insert(item, at->previous, at) : 0;
}

void vPTRLIST::unlink(node* at, bool free_item) noexcept
{
    (at->previous ? at->previous->next : first_) = at->next;
    (at->next ? at->next->previous : last_) = at->previous;
    current_ = at->previous ? at->previous : at->next;
    at->owns_item = at->owns_item || free_item;
    delete at;
    --count_;
}

int vPTRLIST::Remove(void* item) noexcept
{
    node* const at = find(item);
    if (at)
        unlink(at, false);
    return at != nullptr;
}

int vPTRLIST::Delete(void* item) noexcept
{
    node* const at = find(item);
    if (at)
        unlink(at, true);
    return at != nullptr;
}

void vPTRLIST::clear(bool free_items) noexcept
{
    while (first_)
        unlink(first_, free_items);
}

} // namespace klv
