#pragma once

#include "klv/filters/filter.h"

#include <cstdint>

namespace klv {

class oFILTERLISTINSTANCE;

/// Handle of the process-wide list of filters. The list is there from the first handle to the last; its
/// filters are each thread's own, so that threads may convert at the same time with what the list gives them,
/// and go with the last handle or with their thread. The order of the list is the order in which a file's
/// format is probed.
class oFILTERLIST : public vOBJECT {
public:
    oFILTERLIST();
    ~oFILTERLIST();
    oFILTERLIST(const oFILTERLIST&);
    oFILTERLIST& operator=(const oFILTERLIST&) = default;

    /// Recognises a stream: by the extension of its name, then by its contents. A name that is an extension
    /// alone (".TIF") is taken at its word.
    /// \param filter receives the chosen filter, owned by this thread's list, or null.
    /// \return the filter's type, or oFILTER_NONE.
    static oFILTER_TYPE GetFilter(vSTREAM* stream, oFILTER** filter);
    static std::uint16_t GetNoItems();
    /// The i-th filter in list order, counting from 0; null past the end.
    oFILTER* operator[](std::uint16_t i) const;
};

} // namespace klv
