#include <CLI/CLI.hpp>

#include <cstdlib>
#include <string>

#include "tools/klv/commands.h"
#include "tools/klv/interrupt.h"

namespace {

constexpr int exit_misused = 2;
constexpr int largest_side = 32767;

// Colours are #RRGGBB or #RGB.
std::string parse_colour(const std::string& text, klv::vCOLOUR& into)
{
    const bool short_form = text.size() == 4;
    const std::string error = "a colour is #RRGGBB or #RGB";
    if ((!short_form && text.size() != 7) || text[0] != '#'
        || text.find_first_not_of("0123456789abcdefABCDEF", 1) != std::string::npos)
        return error;
    const auto channel = [&](std::size_t i) {
        const auto digits = short_form ? std::string(2, text[1 + i]) : text.substr(1 + 2 * i, 2);
        return static_cast<unsigned char>(std::strtoul(digits.c_str(), nullptr, 16));
    };
    into = klv::vCOLOUR(channel(0), channel(1), channel(2));
    return {};
}

void add_render_options(CLI::App& command, klv::tool::render_options& render)
{
    command.add_option("--width", render.width, "width in pixels")->check(CLI::Range(1, largest_side));
    command.add_option("--height", render.height, "height in pixels")->check(CLI::Range(1, largest_side));
    command.add_option("--dpi", render.dpi, "pixels per inch of the picture's own size (96)")
        ->check(CLI::Range(1, 10000));
    command.add_option("--antialias", render.antialias, "samples along each axis of a pixel (4); 1 for none")
        ->check(CLI::Range(1, 16));
    command.add_option_function<std::string>(
        "--background",
        [&render](const std::string& text) {
            const auto error = parse_colour(text, render.background);
            if (!error.empty())
                throw CLI::ValidationError("--background", error);
        },
        "colour under the picture, #RRGGBB (white)");
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app("View, convert and draw pictures of many formats.", "klv");
    app.set_version_flag("--version", "klv 0.1.0");
    app.require_subcommand(1);
    klv::tool::install_interrupt_handler();

    klv::tool::convert_options convert;
    std::vector<std::string> names;
    auto* convert_command = app.add_subcommand("convert", "convert IN OUT, or IN... DIRECTORY");
    convert_command->add_option("files", names, "inputs, then the output; - is standard input or output")
        ->required()
        ->expected(2, -1);
    convert_command->add_option("--format", convert.format, "format to write: png, bmp, vmm");
    add_render_options(*convert_command, convert.render);

    std::vector<std::string> files;
    bool as_json = false;
    auto* info_command = app.add_subcommand("info", "say what files hold");
    info_command->add_option("files", files, "files; - is standard input")->required();
    info_command->add_flag("--json", as_json, "as JSON");

    auto* dump_command = app.add_subcommand("dump", "print the records of pictures");
    dump_command->add_option("files", files, "files; - is standard input")->required();

    auto* formats_command = app.add_subcommand("formats", "list the formats");

    std::string demo_output;
    klv::tool::render_options demo_render;
    auto* demo_command = app.add_subcommand("demo", "draw the demonstration picture");
    demo_command->add_option("output", demo_output, "file to write")->required();
    add_render_options(*demo_command, demo_render);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : exit_misused;
    }

    if (*convert_command) {
        convert.output = names.back();
        names.pop_back();
        convert.inputs = names;
        return klv::tool::convert(convert);
    }
    if (*info_command)
        return klv::tool::info(files, as_json);
    if (*dump_command)
        return klv::tool::dump(files);
    if (*formats_command)
        return klv::tool::formats();
    return klv::tool::demo(demo_output, demo_render);
}
