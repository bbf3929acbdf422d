#include "klv/filters/filter.h"

#include "klv/core/resource_id.h"
#include "klv/platform/module_table.h"
#include "klv/platform/system/string_resources.h"
#include "klv/streams/stream.h"

#include <algorithm>
#include <array>

namespace klv {
namespace {

constexpr format_identity no_format{};

// The letters after the last dot of a name, in upper case; empty when there is no dot.
vSTRING extension_of(const vSTRING& name)
{
    const auto text = name.View();
    const auto dot = text.rfind('.');
    if (dot == std::string_view::npos)
        return vSTRING();
    vSTRING extension(text.substr(dot + 1));
    extension.ConvertUpper();
    return extension;
}

bool is_one_of(int depth, std::initializer_list<int> depths)
{
    return std::find(depths.begin(), depths.end(), depth) != depths.end();
}

} // namespace

const char* describe(oFILTER_STATUS status) noexcept
{
    switch (status) {
    case oFILTER_OK:
    case oFILTER_RECOGNISED:
        return "done";
    case oFILTER_FAILED:
        return "the file is damaged or not of its format";
    case oFILTER_NO_MEMORY:
        return "memory ran out";
    case oFILTER_BAD_DATA:
        return "the file holds values that the format does not have";
    case oFILTER_READ_ERROR:
        return "the file ends early or can't be read";
    case oFILTER_UNSUPPORTED:
        return "this variant of the format is not handled";
    case oFILTER_WRITE_ERROR:
        return "the output could not be written in full";
    case oFILTER_CANCELLED:
        return "cancelled";
    }
    return "unknown failure";
}

oFILTER::oFILTER()
    : oFILTER_MAN_OBJECT(1)
    , format_(&no_format)
{
}

oFILTER::oFILTER(const format_identity& format)
    : oFILTER_MAN_OBJECT(1)
    , format_(&format)
{
    const string_resource description{format.description_resource, format.description};
    register_strings(library_instance(), {&description, 1});
}

oFILTER_STATUS oFILTER::CheckStream(vARCHIVE&) { return SetStatus(oFILTER_FAILED); }

oFILTER_STATUS oFILTER::Convert(vARCHIVE*, vARCHIVE*) { return SetStatus(oFILTER_FAILED); }

int oFILTER::ImportColourDepths(int depth) const
{
    return depth <= GetMaxColourDepth() && is_one_of(depth, {1, 4, 8, 16, 24, 32});
}

int oFILTER::ExportColourDepths(int depth) const
{
    return DoesExport() && depth <= GetMaxColourDepth() && is_one_of(depth, {1, 4, 8, 24});
}

vSTRING oFILTER::GetDescription() const
{
    return format_->description.empty() ? vSTRING() : vSTRING(vRESID(format_->description_resource));
}

oPROGRESS* oFILTER::RemoveProgressInd()
{
    oPROGRESS* const progress = progress_;
    progress_ = nullptr;
    return progress;
}

int oFILTER::CheckExtension(vSTREAM* stream)
{
    SetStatus(oFILTER_FAILED);
    if (!stream || !(extension_of(stream->Name()) == GetID()))
        return 0;
    SetStatus(oFILTER_OK);
    return 1;
}

int oFILTER::CanTranslate(vSTREAM* stream)
{
    if (!stream)
        return 0;
    const std::uint32_t position = stream->CurrentPos();
    const auto status = CheckStream(*stream);
    stream->MoveFromStart(position);
    return status != oFILTER_FAILED;
}

} // namespace klv
