#include "klv/filters/wmf/wmf_decoder.h"

#include "klv/core/progress.h"
#include "klv/filters/wmf/wmf_record_decoding.h"
#include "klv/streams/stream.h"
#include "klv/streams/stream_bytes.h"

#include <algorithm>
#include <new>

namespace klv {
namespace {

// Objects beyond these are lost.
constexpr std::size_t object_numbers = 200;

} // namespace

wmf_decoder::wmf_decoder(vMETAFILE& picture, const reading_policy& policy, oPROGRESS* progress)
    : canvas_(picture, policy, object_numbers)
    , policy_(policy)
    , progress_(progress)
{
}

oFILTER_STATUS wmf_decoder::read(vSTREAM& stream)
{
    const std::uint32_t start = stream.CurrentPos();
    const stream_bytes source(stream);
    byte_reader in(source.bytes());
    if (!read_headers(in))
        return oFILTER_FAILED;
    oFILTER_STATUS status = oFILTER_OK;
    try {
        status = read_all(in);
    } catch (const std::bad_alloc&) {
        status = oFILTER_NO_MEMORY;
    }
    if (status == oFILTER_OK && !source.complete())
        status = oFILTER_NO_MEMORY;
    canvas_.finish();
    stream.MoveFromStart(start + static_cast<std::uint32_t>(in.position()));
    return status;
}

bool wmf_decoder::read_headers(byte_reader& in)
{
    wmf_placeable_header placeable;
    byte_reader ahead = in;
    if (wmf_read(ahead, placeable) && placeable.key == wmf_placeable_key) {
        in = ahead;
        canvas_.page().box(
            {placeable.left, placeable.top, placeable.right, placeable.bottom, placeable.units_per_inch});
    }
    canvas_.start();
    if (!wmf_read(in, header_) || !header_.valid())
        return false;
    in.skip(header_.header_words * std::size_t{2} - wmf_header_size);
    return true;
}

std::uint32_t wmf_decoder::announced_words() const
{
    return header_.file_words > header_.header_words ? header_.file_words - header_.header_words : 0;
}

oFILTER_STATUS wmf_decoder::read_all(byte_reader& in)
{
    if (progress_) {
        progress_->oStart();
        progress_->oFullScale(announced_words());
    }
    const auto status = read_records(in);
    canvas_.settle();
    if (progress_)
        progress_->oTerminate();
    return status;
}

oFILTER_STATUS wmf_decoder::read_records(byte_reader& in)
{
    std::uint64_t words_left = announced_words();
    oFILTER_STATUS status = oFILTER_OK;
    while (policy_.trusts_bytes_over_sizes ? !in.at_end() : words_left > 0) {
        const auto record = next_record(in, status);
        if (!record)
            return status;
        if (progress_) {
            progress_->oIncrement(record->words);
            if (progress_->Stop())
                return oFILTER_CANCELLED;
        }
        if (policy_.trusts_bytes_over_sizes && record->function == wmf_function::end_of_file)
            return status;
        decode(*record);
        words_left -= std::min<std::uint64_t>(words_left, record->words);
    }
    return status;
}

// Nothing at the end of the records; the status then says whether that end was a proper one.
std::optional<wmf_record> wmf_decoder::next_record(byte_reader& in, oFILTER_STATUS& status) const
{
    if (in.left() < sizeof(std::uint32_t)) {
        status = oFILTER_OK;
        in.skip(in.left());
        return std::nullopt;
    }
    wmf_record record;
    record.words = in.u32le();
    const bool too_long = record.words > header_.largest_record_words && !policy_.trusts_bytes_over_sizes;
    if (record.words < wmf_shortest_record_words || too_long) {
        status = oFILTER_FAILED;
        return std::nullopt;
    }
    record.function = static_cast<wmf_function>(in.u16le());
    record.parameters = in.bytes(record.words * std::size_t{2} - wmf_record_head_size);
    if (!in.ok()) {
        status = oFILTER_FAILED;
        return std::nullopt;
    }
    return record;
}

void wmf_decoder::decode(const wmf_record& record)
{
    using enum windows_canvas::what_follows;
    if (is_wmf_bitmap(record, policy_)) {
        canvas_.before(bitmap);
        decode_wmf_bitmap(record, canvas_, transparent_);
        return;
    }
    canvas_.before(record.function == wmf_function::line_to ? line_segment : other);
    static_cast<void>(decode_wmf_figure(record, canvas_) || decode_wmf_state(record, canvas_)
        || decode_wmf_mapping(record, canvas_) || decode_wmf_clip(record, canvas_)
        || decode_wmf_object(record, canvas_) || decode_wmf_text(record, canvas_)
        || decode_wmf_escape(record, canvas_, transparent_));
}

} // namespace klv
