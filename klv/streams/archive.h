#pragma once

#include "klv/core/object.h"

namespace klv {

/// Root of everything that a filter can be handed: a stream of bytes or a storage of named streams.
class vARCHIVE : public vOBJECT {
public:
    virtual ~vARCHIVE() = default;
    /// \return 1 for a vSTREAM, 0 for any other archive.
    virtual int IsStream() const noexcept { return 0; }

protected:
    vARCHIVE() = default;
    vARCHIVE(const vARCHIVE&) = default;
    vARCHIVE& operator=(const vARCHIVE&) = default;
};

} // namespace klv
