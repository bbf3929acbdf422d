#pragma once

#include "klv/filters/bitmap_filter.h"

namespace klv {

/// Tag Image File Format, revision 6.0. The first image of a file is read by the library's own decoder: black
/// and white, grey, palette and RGB images of samples up to 8 bits, chunky or planar, uncompressed or packed
/// with PackBits, LZW (strips below 32 KiB) or CCITT modified Huffman. Other files go to the imaging library,
/// which also writes.
class TIFFILTER : public oBMFILTER {
public:
    using oBMFILTER::Convert;

    TIFFILTER();
    /// Tests the header at the stream's position; RECOGNISED when it is one.
    oFILTER_STATUS CheckStream(vARCHIVE& in) override;
    /// Stored conversion, by the same decoder.
    oFILTER_STATUS Convert(vARCHIVE* in, vARCHIVE* out) override;
    /// The file starts at the stream's position. What was decoded before a failure stays in the bitmap.
    /// UNSUPPORTED and CANCELLED are final; after any other failure of the own decoder the answer is that of
    /// the imaging library.
    oFILTER_STATUS Convert(vSTREAM& in, oDIB& out) override;
    oFILTER_STATUS Convert(oDIB& in, vSTREAM& out) override;
    int ExportColourDepths(int depth) const override;

private:
    oFILTER_STATUS convert_with_own_decoder(vSTREAM& in, oDIB& out) noexcept;
};

} // namespace klv
