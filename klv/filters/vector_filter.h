#pragma once

#include "klv/filters/filter.h"

namespace klv {

class vMETAFILE;

/// How literally a vector reader takes its format.
enum class oREADING_LEVEL : int {
    documented = 0, ///< what the library's own documentation promises, and no more
    faithful = 1, ///< also what other programs' files need to look as they were meant
};

/// Base of the vector formats: read into a recorded picture by driving its drawing calls.
class oLAFILTER : public oFILTER {
public:
    using oFILTER::Convert;

    oLAFILTER() = default;
    oFILTER_TYPE Type() const override { return oFILTER_METAFILE; }

    /// Stored conversion: reads `in` into a recorded picture written onto `out`. FAILED unless both are
    /// streams.
    oFILTER_STATUS Convert(vARCHIVE* in, vARCHIVE* out) override;

    /// Reads `in` into an existing picture. What was drawn before a failure stays in the picture.
    virtual oFILTER_STATUS Convert(vARCHIVE& in, vMETAFILE* picture);
    /// Writes a picture in the filter's format.
    virtual oFILTER_STATUS Convert(vMETAFILE& picture, vSTREAM& out);
    /// Hands out a recording device that writes the format directly onto `out`. \return 0 when there is none.
    virtual int GetMetafileInterface(vSTREAM& out, vMETAFILE** device);

    using oFILTER::SetProgressInd;
    void SetProgressInd(oPROGRESSLA* progress);

    /// The reading level starts at `documented`.
    void ReadingLevel(oREADING_LEVEL level) { reading_level_ = level; }
    oREADING_LEVEL ReadingLevel() const { return reading_level_; }

protected:
    using oFILTER::oFILTER;
    bool faithful() const { return reading_level_ >= oREADING_LEVEL::faithful; }

private:
    oREADING_LEVEL reading_level_ = oREADING_LEVEL::documented;
};

} // namespace klv
