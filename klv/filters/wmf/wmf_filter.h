#pragma once

#include "klv/filters/vector_filter.h"

namespace klv {

/// Reads Windows Metafiles, with or without the placeable header, into a recorded picture. The traces that
/// the library's own Windows metafile writer leaves of graduated fills and transparent bitmaps become
/// graduated fills and bitmaps again.
class WMFFILTER : public oLAFILTER {
public:
    using oLAFILTER::Convert;

    WMFFILTER();
    /// Accepts a metafile header of type 1 or 2 with sensible sizes, with or without a placeable header
    /// before it. The stream ends at its start.
    oFILTER_STATUS CheckStream(vARCHIVE& in) override;
    oFILTER_STATUS Convert(vARCHIVE& in, vMETAFILE* picture) override;
    int DoesExport() const override { return 0; }
};

} // namespace klv
