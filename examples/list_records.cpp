// The records of a picture, listed: list_records IN

#include <cstdio>

#include <klv/metafiles/record_cursor.h>
#include <klv/metafiles/record_text.h>
#include <klv/rendering/document.h>

int main(int argc, char** argv)
{
    klv::document opened;
    if (argc != 2 || !klv::open_file(argv[1], opened).ok() || !opened.picture) {
        std::fprintf(stderr, "usage: list_records IN, a picture\n");
        return 2;
    }
    klv::record_line line;
    const bool whole = klv::for_each_record(*opened.picture, [&](const klv::metafile_record& record) {
        line.clear();
        describe(record, line);
        std::puts(line.c_str());
    });
    return whole ? 0 : 1;
}
