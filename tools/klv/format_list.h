#pragma once

#include "klv/filters/bitmap_filter.h"
#include "klv/filters/filter_list.h"
#include "klv/filters/raster/photoshop_filter.h"

#include <cstdint>
#include <string>

namespace klv::tool {

/// The formats that klv offers: those of the library's filter list and those that are in no list.
class format_list {
public:
    /// The filter that reads a stream: by the name's extension and by contents, as the library does, then by
    /// the bytes that tell formats which the library knows by their extension only, then by the extension of
    /// a raster format whose contents the library does not recognise. Null for none.
    oFILTER* reader_of(vSTREAM& stream);
    /// The filter that writes files with an extension ("PNG", "JPEG"), in upper case. Null for none.
    oBMFILTER* writer_of(const std::string& extension);

    /// Calls visit(oFILTER&) for every format.
    template <class Visit> void for_each(Visit visit)
    {
        for (std::uint16_t i = 0; i < oFILTERLIST::GetNoItems(); ++i)
            visit(*listed_[i]);
        visit(photoshop_);
    }

private:
    oFILTER* with_id(const std::string& id);

    oFILTERLIST listed_;
    PSDFILTER photoshop_;
};

} // namespace klv::tool
