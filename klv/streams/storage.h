#pragma once

#include "klv/core/list.h"
#include "klv/core/string.h"
#include "klv/streams/stream.h"

#include <cstdint>

namespace klv {

/// A named place that holds streams. What it does itself is nothing: the operations answer 0.
class vSTORAGE : public vARCHIVE {
public:
    explicit vSTORAGE(const vSTRING& name, std::uint32_t = 0) noexcept
        : name_(name)
    {
    }

    int IsStream() const noexcept override { return 0; }
    /// The storage owns the stream that it makes or opens.
    virtual vSTREAM* CreateStream(const vSTRING& name, std::uint32_t mode) noexcept = 0;
    virtual vSTREAM* OpenStream(const vSTRING& name, std::uint32_t mode) noexcept = 0;
    virtual int CopyTo(const vSTRING& target) noexcept;
    virtual int RenameElement(const vSTRING& from, const vSTRING& to) noexcept;
    virtual int DestroyElement(const vSTRING& name) noexcept;
    virtual int MoveElementTo(
        const vSTRING& name, const vSTRING& storage, const vSTRING& new_name, std::uint32_t flags) noexcept;
    virtual void SelectElements(const vSTRING& pattern, fLIST* list) noexcept;
    virtual vSTRING GetName() noexcept { return name_; }

protected:
    vSTRING name_;
};

} // namespace klv
