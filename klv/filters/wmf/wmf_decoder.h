#pragma once

#include "klv/base/byte_reader.h"
#include "klv/filters/filter.h"
#include "klv/filters/windows/windows_canvas.h"
#include "klv/filters/wmf/wmf_transparent_bitmap.h"
#include "klv/formats/wmf_records.h"

#include <cstdint>
#include <optional>

namespace klv {

class oPROGRESS;
class vMETAFILE;
class vSTREAM;

/// One conversion of a Windows metafile into a recorded picture: the file's bytes, in their order, become
/// calls of a canvas.
class wmf_decoder {
public:
    wmf_decoder(vMETAFILE& picture, const reading_policy& policy, oPROGRESS* progress);

    oFILTER_STATUS read(vSTREAM& in);

private:
    bool read_headers(byte_reader& in);
    oFILTER_STATUS read_all(byte_reader& in);
    oFILTER_STATUS read_records(byte_reader& in);
    std::optional<wmf_record> next_record(byte_reader& in, oFILTER_STATUS& status) const;
    void decode(const wmf_record& record);
    /// Words that the header announces behind itself.
    [[nodiscard]] std::uint32_t announced_words() const;

    windows_canvas canvas_;
    const reading_policy& policy_;
    oPROGRESS* progress_;
    wmf_header header_;
    wmf_transparent_bitmap transparent_;
};

} // namespace klv
