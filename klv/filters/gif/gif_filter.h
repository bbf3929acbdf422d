#pragma once

#include "klv/filters/bitmap_filter.h"

namespace klv {

/// GIF images, at most 8 bits per pixel. The imaging module takes part where it has the format; otherwise the
/// library's own decoder and encoder do the work.
class GIFFILTER : public oBMFILTER {
public:
    using oBMFILTER::Convert;

    GIFFILTER();
    /// Accepts "GIF" at the stream's position.
    oFILTER_STATUS CheckStream(vARCHIVE& in) override;
    /// Reads a GIF stream and writes a bitmap: in the library's own stream form where the imaging module
    /// reads it, else as a Windows bitmap file, which begins with that form. What could be read of a damaged
    /// file is written too. UNSUPPORTED when the input is no stream.
    oFILTER_STATUS Convert(vARCHIVE* in, vARCHIVE* out) override;
    /// Reads the first image with a colour table: by the imaging module, by the outside reader library
    /// where one is installed, by the own decoder. Lines that a damaged file gives before the damage stay in
    /// the bitmap.
    oFILTER_STATUS Convert(vSTREAM& in, oDIB& out) override;
    /// Writes by the imaging module where it writes the format, else by PrivateConvert.
    oFILTER_STATUS Convert(oDIB& in, vSTREAM& out) override;
    /// Writes by the own encoder, in version 87a. Bitmaps of more than 8 bits are reduced to 256 colours.
    virtual oFILTER_STATUS PrivateConvert(oDIB& in, vSTREAM& out);

private:
    oFILTER_STATUS DoConvert(vSTREAM& in, vSTREAM& out);
};

} // namespace klv
