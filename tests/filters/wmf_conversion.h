#pragma once

#include "klv/filters/wmf/wmf_filter.h"
#include "klv/metafiles/metafile.h"
#include "klv/metafiles/record_cursor.h"
#include "klv/metafiles/record_text.h"
#include "klv/streams/memory_stream.h"

#include <memory>
#include <string>
#include <vector>

namespace klv::test {

/// A file turned into a recorded picture, and what became of it.
struct conversion {
    explicit conversion(std::vector<std::uint8_t> file, oREADING_LEVEL level = oREADING_LEVEL::documented)
        : bytes(std::move(file))
    {
        std::uint8_t* data = bytes.data();
        vMEMSTREAM stream(&data, static_cast<std::uint32_t>(bytes.size()), vSTRING("test.wmf"), 0);
        WMFFILTER filter;
        filter.ReadingLevel(level);
        status = filter.Convert(stream, &picture);
    }

    template <class Record> std::vector<Record> all()
    {
        std::vector<Record> found;
        for_each_record(picture, [&found](metafile_record& record) {
            if (auto* wanted = std::get_if<Record>(&record))
                found.push_back(std::move(*wanted));
        });
        return found;
    }
    /// Names of the records that draw, one word each.
    std::string figures()
    {
        std::string names;
        for_each_record(picture, [&names](metafile_record& record) {
            const auto code = code_of(record);
            const bool draws = code >= record_code::polyline && code <= record_code::round_rectangle
                && code != record_code::text_transparency;
            if (draws)
                names += std::string(names.empty() ? "" : ", ") + name_of(code);
        });
        return names;
    }

    std::vector<std::uint8_t> bytes;
    vMETAFILE picture;
    oFILTER_STATUS status = oFILTER_FAILED;
};

} // namespace klv::test
