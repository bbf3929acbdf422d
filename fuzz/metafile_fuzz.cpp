// A recorded picture that nobody vetted: its records are printed, and drawn on a small device.

#include "klv/devices/memory_device.h"
#include "klv/metafiles/metafile.h"
#include "klv/metafiles/record_cursor.h"
#include "klv/metafiles/record_text.h"
#include "klv/streams/memory_stream.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace klv;
    vMEMSTREAM stream;
    stream.WritePlain(data, static_cast<std::uint32_t>(size));
    vMETAFILE picture(stream);

    record_line line;
    for_each_record(picture, [&](metafile_record& r) {
        line.clear();
        describe(r, line);
    });

    for (const vTEXTREPLAY replay : {vTEXTREPLAY::as_bitmap, vTEXTREPLAY::as_text}) {
        picture.TextReplay(replay);
        vMEMDEVICE device(64, 48);
        device.DrawMetafile(picture, vRECT(0, 0, 64, 48));
    }
    return 0;
}
