#pragma once

#include "klv/core/object.h"

#include <cstdint>

namespace klv {

/// One link of a list: joins its neighbours when it is destroyed. The held object is not owned.
class fLINK : public vOBJECT {
public:
    fLINK(const vOBJECT& object, fLINK* previous, fLINK* next) noexcept;
    fLINK(const fLINK&) = delete;
    fLINK& operator=(const fLINK&) = delete;
    virtual ~fLINK();

    [[nodiscard]] vOBJECT* Object() const noexcept { return object_; }
    /// \return true when the link holds exactly o
    [[nodiscard]] int Compare(const vOBJECT& o) const noexcept { return object_ == &o; }
    [[nodiscard]] fLINK* Previous() const noexcept { return previous_; }
    [[nodiscard]] fLINK* Next() const noexcept { return next_; }

private:
    fLINK* previous_;
    fLINK* next_;
    vOBJECT* object_;
};

/// Doubly linked list of objects that it does not own; at most 65535. An object may be held several times.
/// A copy has links of its own.
class fLIST : public vOBJECT {
public:
    fLIST() noexcept = default;
    fLIST(const fLIST& other) noexcept;
    fLIST& operator=(const fLIST& other) noexcept;
    virtual ~fLIST();

    /// \return 1, or 0 when the link can't be had
    int Append(const vOBJECT& o) noexcept;
    int Prepend(const vOBJECT& o) noexcept;
    /// Removes the first link that holds o, the ends being looked at first.
    /// \return 1, or 0 when o is not held
    int Remove(const vOBJECT& o) noexcept;
    /// \return 1 when o is held
    [[nodiscard]] int Search(const vOBJECT& o) const noexcept;

    [[nodiscard]] vOBJECT* First() const noexcept { return first_ ? first_->Object() : nullptr; }
    [[nodiscard]] vOBJECT* Last() const noexcept { return last_ ? last_->Object() : nullptr; }
    [[nodiscard]] int IsEmpty() const noexcept { return count_ == 0; }
    [[nodiscard]] std::uint16_t NoItems() const noexcept { return count_; }
    /// The link after l; the first for null.
    [[nodiscard]] fLINK* Next(const fLINK* l) const noexcept { return l ? l->Next() : first_; }
    /// The link before l; the last for null.
    [[nodiscard]] fLINK* Prev(const fLINK* l) const noexcept { return l ? l->Previous() : last_; }

protected:
    /// Removes the last link. \return its object, null when the list is empty
    vOBJECT* Pull() noexcept { return take(last_); }
    /// Removes the first link. \return its object, null when the list is empty
    vOBJECT* Pop() noexcept { return take(first_); }
    void RemoveAll() noexcept;

private:
    vOBJECT* take(fLINK* link) noexcept;
    [[nodiscard]] fLINK* find(const vOBJECT& o) const noexcept;

    fLINK* first_ = nullptr;
    fLINK* last_ = nullptr;
    std::uint16_t count_ = 0;
};

/// First in, first out.
class fQUEUE : public fLIST {
public:
    int Push(const vOBJECT& o) noexcept { return Prepend(o); }
    vOBJECT* Pull() noexcept { return fLIST::Pull(); }
    /// The newest object.
    [[nodiscard]] vOBJECT* Top() const noexcept { return First(); }
    /// The oldest object.
    [[nodiscard]] vOBJECT* Bottom() const noexcept { return Last(); }
};

/// Last in, first out.
class fSTACK : public fLIST {
public:
    fSTACK() noexcept = default;
    fSTACK(const fSTACK& other) noexcept = default;
    /// Moves the objects of source, from its front, to the end of this stack.
    /// \return a copy of this stack
    fSTACK operator=(fSTACK& source) noexcept;

    int Push(const vOBJECT& o) noexcept { return Prepend(o); }
    vOBJECT* Pop() noexcept { return fLIST::Pop(); }
    [[nodiscard]] vOBJECT* Top() const noexcept { return First(); }
};

/// A cursor: an index and, where a list is walked, a link.
class ITERATOR : public vOBJECT {
public:
    void Next() noexcept
    {
        index_ = static_cast<std::uint16_t>((index_ + 1) & 0xFFFF);
        if (link_)
            link_ = link_->Next();
    }
    void Previous() noexcept
    {
        index_ = static_cast<std::uint16_t>((index_ - 1) & 0xFFFF);
        if (link_)
            link_ = link_->Previous();
    }
    void Reset() noexcept
    {
        index_ = 0;
        link_ = nullptr;
    }
    [[nodiscard]] fLINK* GetLink() const noexcept { return link_; }
    void SetLink(fLINK* link) noexcept { link_ = link; }
    [[nodiscard]] std::uint16_t operator()() const noexcept { return index_; }
    /// The indices are compared.
    bool operator==(const ITERATOR& other) const noexcept { return index_ == other.index_; }

private:
    std::uint16_t index_ = 0;
    fLINK* link_ = nullptr;
};

} // namespace klv
