#include "klv/metafiles/record_cursor.h"

#include "klv/metafiles/detail/record_stream.h"
#include "klv/metafiles/metafile.h"

namespace klv {

record_cursor::record_cursor(vMETAFILE& picture) noexcept
    : stream_(picture.native_ ? nullptr : picture.stream_)
{
    if (!stream_)
        return;
    stream_->MoveFromStart(vMETAFILE::version_offset);
    version_ = stream_->ReadUWord();
    stream_->MoveFromStart(vMETAFILE::header_size);
}

bool record_cursor::next(metafile_record& into) noexcept
{
    into = end_record(); // lets go of bytes of the stream that the last record uses
    if (!stream_ || stream_->AtEnd())
        return false;
    record_reader in(*stream_, version_);
    broken_ = !read_record(in, into);
    if (broken_ || std::holds_alternative<end_record>(into))
        stream_ = nullptr;
    return !broken_;
}

std::uint32_t record_cursor::position() const noexcept { return stream_ ? stream_->CurrentPos() : 0; }

} // namespace klv
