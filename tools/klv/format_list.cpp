#include "tools/klv/format_list.h"

#include "klv/streams/stream.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

namespace klv::tool {
namespace {

using namespace std::string_view_literals;

// Other extensions that files of a format have.
struct alias {
    std::string_view extension;
    const char* id;
};
constexpr std::array aliases{alias{"JPEG", "JPG"}, alias{"JPE", "JPG"}, alias{"JFIF", "JPG"},
    alias{"TIFF", "TIF"}, alias{"DIB", "BMP"}, alias{"ICB", "TGA"}, alias{"VDA", "TGA"}, alias{"VST", "TGA"}};

// Bytes that tell a format, from the start of the file or, with a negative offset, from its end.
struct signature {
    const char* id;
    std::int32_t offset;
    std::string_view bytes;
};
constexpr std::array signatures{signature{"PNG", 0, "\x89PNG\r\n\x1A\n"sv}, signature{"PSD", 0, "8BPS\0\1"sv},
    signature{"FPX", 0, "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"sv}, signature{"PCD", 2048, "PCD_IPI"sv},
    signature{"TGA", -18, "TRUEVISION-XFILE.\0"sv}};

bool holds(vSTREAM& stream, const signature& wanted)
{
    const auto size = static_cast<std::uint32_t>(wanted.bytes.size());
    const std::int64_t start
        = wanted.offset < 0 ? std::int64_t{stream.Size()} + wanted.offset : wanted.offset;
    if (start < 0 || start + size > stream.Size())
        return false;
    stream.MoveFromStart(static_cast<std::uint32_t>(start));
    std::vector<std::uint8_t> found(size);
    return stream.ReadPlain(found.data(), size) == size
        && std::equal(found.begin(), found.end(), wanted.bytes.begin(),
            [](std::uint8_t a, char b) { return a == static_cast<std::uint8_t>(b); });
}

} // namespace

oFILTER* format_list::with_id(const std::string& id)
{
    oFILTER* found = nullptr;
    for_each([&](oFILTER& filter) {
        if (filter.GetID() == vSTRING(id))
            found = &filter;
    });
    return found;
}

oFILTER* format_list::reader_of(vSTREAM& stream)
{
    oFILTER* filter = nullptr;
    if (oFILTERLIST::GetFilter(&stream, &filter) != oFILTER_NONE)
        return filter;
    const auto told
        = std::ranges::find_if(signatures, [&](const signature& each) { return holds(stream, each); });
    stream.MoveFromStart(0);
    if (told != signatures.end())
        return with_id(told->id);
    for_each([&](oFILTER& each) {
        if (each.Type() == oFILTER_BITMAP && each.CheckExtension(&stream))
            filter = &each;
    });
    return filter;
}

oBMFILTER* format_list::writer_of(const std::string& extension)
{
    const auto known = std::ranges::find(aliases, extension, &alias::extension);
    oFILTER* const filter = with_id(known == aliases.end() ? extension : known->id);
    if (!filter || filter->Type() != oFILTER_BITMAP || !filter->DoesExport())
        return nullptr;
    return static_cast<oBMFILTER*>(filter);
}

} // namespace klv::tool
