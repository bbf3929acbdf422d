#include "klv/core/list.h"

#include <limits>

namespace klv {

// The interface takes objects by constant reference and hands them out again as they were put in.
fLINK::fLINK(const vOBJECT& object, fLINK* previous, fLINK* next) noexcept
    : previous_(previous)
    , next_(next)
    , object_(const_cast<vOBJECT*>(&object))
{
    if (previous_)
        previous_->next_ = this;
    if (next_)
        next_->previous_ = this;
}

fLINK::~fLINK()
{
    if (previous_)
        previous_->next_ = next_;
    if (next_)
        next_->previous_ = previous_;
}

fLIST::fLIST(const fLIST& other) noexcept
    : vOBJECT(other)
{
    *this = other;
}

fLIST& fLIST::operator=(const fLIST& other) noexcept
{
    if (this == &other)
        return *this;
    RemoveAll();
    for (const fLINK* link = other.first_; link; link = link->Next())
        if (!Append(*link->Object()))
            break;
    return *this;
}

fLIST::~fLIST() { RemoveAll(); }

int fLIST::Append(const vOBJECT& o) noexcept
{
    if (count_ == std::numeric_limits<std::uint16_t>::max())
        return 0;
    auto* const link = new fLINK(o, last_, nullptr);
    if (!link)
        return 0;
    last_ = link;
    if (!first_)
        first_ = link;
    ++count_;
    return 1;
}

int fLIST::Prepend(const vOBJECT& o) noexcept
{
    if (count_ == std::numeric_limits<std::uint16_t>::max())
        return 0;
    auto* const link = new fLINK(o, nullptr, first_);
    if (!link)
        return 0;
    first_ = link;
    if (!last_)
        last_ = link;
    ++count_;
    return 1;
}

fLINK* fLIST::find(const vOBJECT& o) const noexcept
{
    if (last_ && !first_->Compare(o) && last_->Compare(o))
        return last_;
    for (fLINK* link = first_; link; link = link->Next())
        if (link->Compare(o))
            return link;
    return nullptr;
}

vOBJECT* fLIST::take(fLINK* link) noexcept
{
    if (!link)
        return nullptr;
    vOBJECT* const object = link->Object();
    if (link == first_)
        first_ = link->Next();
    if (link == last_)
        last_ = link->Previous();
    delete link;
    --count_;
    return object;
}

int fLIST::Remove(const vOBJECT& o) noexcept { return take(find(o)) != nullptr; }

int fLIST::Search(const vOBJECT& o) const noexcept { return find(o) != nullptr; }

void fLIST::RemoveAll() noexcept
{
    while (first_)
        take(first_);
}

fSTACK fSTACK::operator=(fSTACK& source) noexcept
{
    if (this != &source)
        while (vOBJECT* const object = source.Top()) {
            if (!Append(*object))
                break;
            source.Pop();
        }
    return *this;
}

} // namespace klv
