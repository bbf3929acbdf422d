#pragma once

#include "klv/base/memory.h"
#include "klv/metafiles/metafile_records.h"

#include <string>

namespace klv {

using record_line = std::basic_string<char, std::char_traits<char>, vALLOCATOR<char>>;

/// Which code the record has in its stream.
record_code code_of(const metafile_record& what);

/// The name of a kind of record, a few lower-case words; "unknown" for a code that no kind has.
const char* name_of(record_code code);

/// Appends a readable line about a record to `line`: its name and all its fields; a bitmap by its size only.
/// Printable ASCII, without a line end. May throw std::bad_alloc.
void describe(const metafile_record& what, record_line& line);

} // namespace klv
