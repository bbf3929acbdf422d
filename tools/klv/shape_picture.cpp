#include "tools/klv/shape_picture.h"

#include "klv/geometry/primitive_shapes.h"
#include "klv/metafiles/detail/record_stream.h"
#include "klv/metafiles/record_cursor.h"

#include "tools/klv/failure.h"
#include "tools/klv/input.h"

#include <array>
#include <new>

namespace klv::tool {
namespace {

// The rest of a picture's header after its version, which new records decide: units, extents, sizes, and last
// the number of records.
constexpr std::uint32_t units_offset = vMETAFILE::version_offset + 2;
constexpr std::uint32_t count_offset = vMETAFILE::header_size - 4;

std::unique_ptr<vMEMSTREAM> new_stream() { return std::make_unique<vMEMSTREAM>(vSTRING("picture")); }

std::unique_ptr<vMETAFILE> picture_on(vMEMSTREAM& stream) { return std::make_unique<vMETAFILE>(stream); }

std::optional<vSHAPE> closed_shape(const metafile_record& record)
{
    if (const auto* shape = std::get_if<shape_record>(&record)) {
        if (shape->shape.Closed() != 0 && shape->shape.IsValid() != 0)
            return shape->shape;
    } else if (const auto* rectangle = std::get_if<rectangle_record>(&record)) {
        return vRECTSHAPE(rectangle->rect);
    } else if (const auto* ellipse = std::get_if<ellipse_record>(&record)) {
        return vELPSSHAPE(ellipse->rect);
    } else if (const auto* round = std::get_if<round_rectangle_record>(&record)) {
        return vROUNDRECTSHAPE(round->rect, round->corner);
    }
    return std::nullopt;
}

void copy_header(vSTREAM& from, vSTREAM& to, std::uint32_t records)
{
    std::array<std::uint8_t, count_offset - units_offset> header{};
    from.MoveFromStart(units_offset);
    from.ReadPlain(header.data(), header.size());
    to.MoveFromStart(units_offset);
    to.WritePlain(header.data(), header.size());
    record_writer(to).i32(static_cast<std::int32_t>(records));
}

} // namespace

shape_picture::shape_picture(const std::string& file)
    : stream_(new_stream())
{
    const document opened = open_input(file);
    if (!opened.picture)
        throw failure("is an image, which has no shapes");
    if (opened.picture->Native() != 0)
        throw failure("holds a picture in another format, which has no shapes");
    warning_ = opened.warning();
    *opened.picture >> *stream_;
    if (stream_->Status() != vSTREAM_OK)
        throw failure("memory ran out");
    picture_ = picture_on(*stream_);
}

std::vector<vSHAPE> shape_picture::closed_shapes()
{
    std::vector<vSHAPE> shapes;
    for_each_record(*picture_, [&](const metafile_record& record) {
        if (auto shape = closed_shape(record))
            shapes.push_back(std::move(*shape));
    });
    return shapes;
}

shape_picture shape_picture::edited(const std::function<std::optional<vSHAPE>(vSHAPE&)>& edit)
{
    shape_picture result;
    result.stream_ = new_stream();
    vMEMSTREAM& out = *result.stream_;
    picture_on(out); // writes a new header
    std::uint32_t count = 0;
    {
        record_writer writer(out);
        for_each_record(*picture_, [&](const metafile_record& record) {
            auto shape = closed_shape(record);
            if (!shape) {
                write_record(writer, record);
                ++count;
            } else if (auto changed = edit(*shape); changed && !changed->empty()) {
                shape_record::write(writer, *changed);
                ++count;
            }
        });
    }
    copy_header(*stream_, out, count);
    if (out.Status() != vSTREAM_OK)
        throw failure("memory ran out");
    result.picture_ = picture_on(out);
    return result;
}

} // namespace klv::tool
