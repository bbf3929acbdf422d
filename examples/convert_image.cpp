// An image converted, with at most 256 colours: convert_image IN OUT

#include <cstdio>

#include <klv/rendering/document.h>
#include <klv/rendering/save.h>

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: convert_image IN OUT\n");
        return 2;
    }
    klv::document image;
    if (const auto status = klv::open_file(argv[1], image); !status.ok()) {
        std::fprintf(stderr, "%s: %s\n", argv[1], status.words());
        return 1;
    }
    std::printf("%s: %s\n", argv[1], image.description());

    klv::save_options options;
    options.depth = 8;
    if (const auto status = klv::save(image, argv[2], options); !status.ok()) {
        std::fprintf(stderr, "%s: %s\n", argv[2], status.words());
        return 1;
    }
    return 0;
}
