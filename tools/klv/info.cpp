#include "klv/metafiles/record_cursor.h"
#include "klv/metafiles/record_text.h"

#include "tools/klv/commands.h"
#include "tools/klv/failure.h"
#include "tools/klv/input.h"
#include "tools/klv/json.h"

#include <cstdint>
#include <cstdio>
#include <map>
#include <string>

namespace klv::tool {
namespace {

constexpr double micrometres_per_millimetre = 1000;

struct record_counts {
    std::uint32_t total = 0;
    std::map<std::string, std::uint32_t> by_name;
};

record_counts count_records(vMETAFILE& picture)
{
    record_counts counts;
    for_each_record(picture, [&](const metafile_record& record) {
        ++counts.total;
        ++counts.by_name[name_of(code_of(record))];
    });
    return counts;
}

void print_picture(vMETAFILE& picture)
{
    const auto counts = count_records(picture);
    std::printf("  page       %.1f x %.1f mm\n", picture.PhysicalWidth() / micrometres_per_millimetre,
        picture.PhysicalHeight() / micrometres_per_millimetre);
    std::printf("  extent     %d x %d units at (%d, %d)\n", picture.LogicalWidth(), picture.LogicalHeight(),
        picture.LogicalXOffset(), picture.LogicalYOffset());
    std::printf("  records    %u\n", counts.total);
    for (const auto& [name, count] : counts.by_name)
        std::printf("    %8u %s\n", count, name.c_str());
}

void print_bitmap(const document& opened)
{
    oDIBHEADER header;
    opened.bitmap->GetHeader(header);
    std::printf("  size       %d x %d pixels, %d bits per pixel\n", header.Width(), header.Height(),
        header.ColourDepth());
    if (header.HorzDPI() > 0 && header.VertDPI() > 0)
        std::printf("  resolution %d x %d dpi\n", header.HorzDPI(), header.VertDPI());
    else
        std::printf("  resolution not given\n");
    for (std::size_t i = 0; i < opened.resolutions.size(); ++i)
        std::printf("  %s %zu: %d x %d pixels\n", i == 0 ? "held as   " : "          ", i,
            opened.resolutions[i].Width(), opened.resolutions[i].Height());
}

void print_text(const std::string& file, const document& opened)
{
    std::printf("%s: %s\n", file.c_str(), opened.description());
    if (opened.picture)
        print_picture(*opened.picture);
    else
        print_bitmap(opened);
    if (!opened.warning.Null())
        std::printf("  warning    %s\n", opened.warning());
}

void write_picture_json(json_writer& json, vMETAFILE& picture)
{
    const auto counts = count_records(picture);
    json.key("kind").value("picture");
    json.key("width_mm").value(picture.PhysicalWidth() / micrometres_per_millimetre);
    json.key("height_mm").value(picture.PhysicalHeight() / micrometres_per_millimetre);
    json.key("left").value(std::int64_t{picture.LogicalXOffset()});
    json.key("top").value(std::int64_t{picture.LogicalYOffset()});
    json.key("width").value(std::int64_t{picture.LogicalWidth()});
    json.key("height").value(std::int64_t{picture.LogicalHeight()});
    json.key("record_count").value(std::int64_t{counts.total});
    json.key("records").begin_object();
    for (const auto& [name, count] : counts.by_name)
        json.key(name).value(std::int64_t{count});
    json.end_object();
}

void write_size_json(json_writer& json, std::int32_t width, std::int32_t height)
{
    json.key("width").value(std::int64_t{width});
    json.key("height").value(std::int64_t{height});
}

void write_bitmap_json(json_writer& json, const document& opened)
{
    oDIBHEADER header;
    opened.bitmap->GetHeader(header);
    json.key("kind").value("bitmap");
    write_size_json(json, header.Width(), header.Height());
    json.key("bits_per_pixel").value(std::int64_t{header.ColourDepth()});
    json.key("horizontal_dpi").value(std::int64_t{header.HorzDPI()});
    json.key("vertical_dpi").value(std::int64_t{header.VertDPI()});
    if (opened.resolutions.empty())
        return;
    json.key("resolutions").begin_array();
    for (const vSIZE& size : opened.resolutions) {
        json.begin_object();
        write_size_json(json, size.Width(), size.Height());
        json.end_object();
    }
    json.end_array();
}

void write_json(json_writer& json, const std::string& file, const document& opened)
{
    json.begin_object();
    json.key("file").value(file);
    json.key("format").value(opened.format());
    json.key("description").value(opened.description());
    if (opened.picture)
        write_picture_json(json, *opened.picture);
    else
        write_bitmap_json(json, opened);
    if (!opened.warning.Null())
        json.key("warning").value(opened.warning());
    json.end_object();
}

} // namespace

int info(const std::vector<std::string>& files, bool as_json)
{
    int status = 0;
    json_writer json;
    json.begin_array();
    for (const auto& file : files) {
        const std::string reason = reason_of_failure([&] {
            const document opened = open_input(file);
            if (as_json)
                write_json(json, file, opened);
            else
                print_text(file, opened);
        });
        if (reason.empty())
            continue;
        status = 1;
        print_failure(file, reason);
        if (as_json) {
            json.begin_object();
            json.key("file").value(file);
            json.key("error").value(reason);
            json.end_object();
        }
    }
    json.end_array();
    if (as_json)
        std::printf("%s\n", json.text().c_str());
    return status;
}

} // namespace klv::tool
