// A file to pixels: render_file IN OUT.ppm

#include <cstdio>
#include <fstream>

#include <klv/rendering/render.h>

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: render_file IN OUT.ppm\n");
        return 2;
    }
    klv::render_options options;
    options.width = 800;
    options.order = klv::pixel_order::rgb;
    klv::rendered_image image;
    if (const auto status = klv::render_file(argv[1], options, image); !status.ok()) {
        std::fprintf(stderr, "%s: %s\n", argv[1], status.words());
        return 1;
    }

    std::ofstream out(argv[2], std::ios::binary);
    out << "P6\n" << image.width() << ' ' << image.height() << "\n255\n";
    const auto pixels = image.bytes();
    out.write(reinterpret_cast<const char*>(pixels.data()), static_cast<std::streamsize>(pixels.size()));
    return out.flush() ? 0 : 1;
}
