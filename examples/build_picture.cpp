// A picture built and saved, in its own form or as an image of it: build_picture OUT.vmm [OUT.png ...]

#include <cstdio>

#include <klv/geometry/primitive_shapes.h>
#include <klv/metafiles/metafile.h>
#include <klv/rendering/save.h>

using namespace klv;

int main(int argc, char** argv)
{
    vMETAFILE picture;
    vLINESPEC pen;
    pen.Colour(vCOLOUR(40, 44, 60));
    pen.Width(30);
    vFILLSPEC fill;
    fill.Colour(vCOLOUR(250, 200, 60));
    picture.LineSpec(pen);
    picture.FillSpec(fill);
    picture.DrawShape(vSTARSHAPE(vRECT(200, 200, 1800, 1800), 5, 0, 42, 0, 0));
    picture.DrawEllipse(vRECT(2200, 200, 3800, 1800));
    picture.DrawTextOnLine(vSTRING("a star and a circle"), vPOINT(200, 2300), nullptr);
    picture.LogicalExtents(0, 4000, 0, 2500);
    picture.PhysicalExtents(80000, 50000); // micrometres
    picture.EndMetaFile();

    for (int i = 1; i < argc; ++i)
        if (const auto status = save(picture, argv[i]); !status.ok()) {
            std::fprintf(stderr, "%s: %s\n", argv[i], status.words());
            return 1;
        }
    return 0;
}
