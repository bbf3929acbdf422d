#pragma once

#include "klv/core/date.h"
#include "klv/core/string.h"

#include <cstdint>

namespace klv {

enum vFILETYPE : std::uint32_t { vFILETYPE_FILE = 0, vFILETYPE_DIRECTORY = 1 };

/// One entry of a listing of a storage.
class vSTOREITERATOR : public vOBJECT {
public:
    vSTOREITERATOR(const vSTRING& name, vFILETYPE type, const vDATETIME& modified, std::int32_t size)
        : name_(name)
        , type_(type)
        , modified_(modified)
        , size_(size)
    {
    }

    const vSTRING& Name() const noexcept { return name_; }
    vFILETYPE Type() const noexcept { return type_; }
    /// When the entry was modified last, in Coordinated Universal Time.
    const vDATETIME& LastModifiedOn() const noexcept { return modified_; }
    /// Bytes; the low 32 bits of the size of a larger file.
    std::int32_t Size() const noexcept { return size_; }

private:
    vSTRING name_;
    vFILETYPE type_;
    vDATETIME modified_;
    std::int32_t size_;
};

} // namespace klv
