#include "tools/klv/commands.h"
#include "tools/klv/interrupt.h"

#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>

#include <CLI/CLI.hpp>

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

void add_render_options(CLI::App& command, klv::render_options& render)
{
    command.add_option("--width", render.width, "width in pixels")->check(CLI::Range(1, largest_side));
    command.add_option("--height", render.height, "height in pixels")->check(CLI::Range(1, largest_side));
    command.add_option("--dpi", render.dpi, "pixels per inch of the picture's own size (96)")
        ->check(CLI::Range(1, 10000));
    command
        .add_option("--antialias", render.samples,
            "samples along each axis of a pixel (4, fewer for costly pictures); 1 for none")
        ->check(CLI::Range(1, 16));
    command.add_option_function<std::string>(
        "--background",
        [&render](const std::string& text) {
            const auto error = parse_colour(text, *render.ground);
            if (!error.empty())
                throw CLI::ValidationError("--background", error);
        },
        "colour under the picture, #RRGGBB (white)");
}

// The subcommands of `shape`. files gets the inputs, then the output.
CLI::App* add_shape_commands(CLI::App& app, klv::tool::shape_options& shape, std::vector<std::string>& files)
{
    using klv::tool::shape_operation;
    constexpr int most_error = 1'000'000'000;
    constexpr int farthest = 1 << 30;
    auto* command = app.add_subcommand("shape", "work on the areas of closed shapes in pictures");
    command->require_subcommand(1);
    const auto add = [&](const char* name, shape_operation operation, const char* what, int most_files) {
        auto* sub = command->add_subcommand(name, what);
        sub->add_option("files", files, most_files == 2 ? "input and output" : "inputs, then the output")
            ->required()
            ->expected(2, most_files);
        sub->callback([&shape, operation] { shape.operation = operation; });
        add_render_options(*sub, shape.render);
        return sub;
    };
    add("union", shape_operation::unite, "unite the shapes of all pictures: IN... OUT", -1);
    add("intersect", shape_operation::intersect,
        "what the pictures' areas, or the shapes of a single one, have in common: IN... OUT", -1);
    auto* offset = add("offset", shape_operation::offset, "grow or shrink each shape: IN OUT", 2);
    offset
        ->add_option("--distance", shape.distance,
            "how far outlines move outwards, in the picture's units; negative: inwards")
        ->required()
        ->check(CLI::Range(-farthest, farthest));
    offset->add_flag("--bevel", shape.bevel, "cut corners that reach farther than 1.5 distances");
    auto* smooth = add("smooth", shape_operation::smooth, "turn outlines into curves: IN OUT", 2);
    smooth
        ->add_option("--mean-error", shape.mean_error,
            "mean of the squared distances of points from their curve, squared units of the picture (50)")
        ->check(CLI::Range(0, most_error));
    smooth->add_option("--greatest-error", shape.greatest_error, "greatest of these distances (3500)")
        ->check(CLI::Range(0, most_error));
    return command;
}

int run(int argc, char** argv)
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
    convert_command->add_option(
        "--format", convert.format, "extension of the format to write, where no name says it");
    convert_command->add_option("--depth", convert.depth, "bits per pixel to write, dithered where needed")
        ->check(CLI::IsMember({1, 4, 8, 24}));
    convert_command->add_option("--resolution", convert.resolution,
        "which resolution to read of files that hold several, 0 the smallest");
    add_render_options(*convert_command, convert.render);

    std::vector<std::string> files;
    bool as_json = false;
    auto* info_command = app.add_subcommand("info", "say what files hold");
    info_command->add_option("files", files, "files; - is standard input")->required();
    info_command->add_flag("--json", as_json, "as JSON");

    auto* dump_command = app.add_subcommand("dump", "print the records of pictures");
    dump_command->add_option("files", files, "files; - is standard input")->required();

    auto* formats_command = app.add_subcommand("formats", "list the formats");

    klv::tool::shape_options shape;
    auto* shape_command = add_shape_commands(app, shape, names);

    std::string demo_output;
    klv::render_options demo_render;
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
    if (*shape_command) {
        shape.output = names.back();
        names.pop_back();
        shape.inputs = names;
        return klv::tool::shape(shape);
    }
    if (*info_command)
        return klv::tool::info(files, as_json);
    if (*dump_command)
        return klv::tool::dump(files);
    if (*formats_command)
        return klv::tool::formats();
    return klv::tool::demo(demo_output, demo_render);
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return run(argc, argv);
    } catch (const std::bad_alloc&) {
        std::fputs("klv: memory ran out\n", stderr);
        return 1;
    }
}
