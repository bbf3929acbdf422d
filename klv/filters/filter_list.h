#pragma once

#include "klv/filters/filter.h"

#include <cstdint>

namespace klv {

class oFILTERLISTINSTANCE;

/// Handle of the process-wide list of filters. The first handle makes the list, the last destroys it. The
/// order of the list is the order in which a file's format is probed.
class oFILTERLIST : public vOBJECT {
public:
    oFILTERLIST();
    ~oFILTERLIST();
    oFILTERLIST(const oFILTERLIST&);
    oFILTERLIST& operator=(const oFILTERLIST&) = default;

    /// Recognises a stream: by the extension of its name, then by its contents. A name that is an extension
    /// alone (".TIF") is taken at its word.
    /// \param filter receives the chosen filter, owned by the list, or null.
    /// \return the filter's type, or oFILTER_NONE.
    static oFILTER_TYPE GetFilter(vSTREAM* stream, oFILTER** filter);
    static std::uint16_t GetNoItems();
    /// The i-th filter in list order, counting from 0; null past the end.
    oFILTER* operator[](std::uint16_t i) const;
};

} // namespace klv
