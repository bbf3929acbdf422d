#pragma once

#include "klv/filters/filter.h"

namespace klv {

class oDIB;

/// Encapsulated PostScript, plain or with the binary DOS EPS header ("Encapsulated PostScript File Format
/// Specification", version 3.0): yields the PostScript text, and the TIFF preview as a bitmap.
class EPSFILTER : public oFILTER {
public:
    using oFILTER::Convert;

    EPSFILTER();
    oFILTER_TYPE Type() const override { return oFILTER_POSTSCRIPT; }
    /// RECOGNISED when the file has the binary header, or comments up to a bounding box.
    oFILTER_STATUS CheckStream(vARCHIVE& in) override;
    /// Writes the PostScript section onto `out`.
    virtual oFILTER_STATUS Convert(vSTREAM& in, vSTREAM& out);
    /// Reads the TIFF preview. FAILED when there is none.
    virtual oFILTER_STATUS Convert(vSTREAM& in, oDIB& preview);
    int DoesExport() const override { return 0; }
};

} // namespace klv
