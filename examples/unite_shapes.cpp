// Two shapes united, drawn over each other and as one: unite_shapes OUT.png

#include <cstdio>

#include <klv/geometry/primitive_shapes.h>
#include <klv/metafiles/metafile.h>
#include <klv/rendering/save.h>

using namespace klv;

int main(int argc, char** argv)
{
    const vRECTSHAPE box(vRECT(200, 500, 1200, 1500));
    const vELPSSHAPE disc(vRECT(700, 200, 1700, 1200));
    vSHAPE both(box);
    if (!both.Union(disc))
        return 1; // too many points for a shape, or memory ran out
    std::printf("box %d, disc %d, both %d square units\n", box.Area(), disc.Area(), both.Area());

    vMETAFILE picture;
    vFILLSPEC fill;
    fill.Colour(vCOLOUR(190, 225, 245));
    picture.FillSpec(fill);
    picture.DrawShape(box);
    picture.DrawShape(disc);
    both.Translate(1900, 0);
    picture.DrawShape(both);
    picture.LogicalExtents(0, 3800, 0, 1700);
    picture.PhysicalExtents(76000, 34000);
    picture.EndMetaFile();
    return argc == 2 && save(picture, argv[1]).ok() ? 0 : 1;
}
