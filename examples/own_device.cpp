// A device of one's own, which measures what a picture draws: own_device IN

#include <cstdio>

#include <klv/devices/device.h>
#include <klv/rendering/document.h>

using namespace klv;

// Without a drawing context to paint on: each figure arrives as the shape or the points that it is.
class figure_meter : public vDEVICE {
public:
    using vDEVICE::DrawLine;
    void DrawLine(std::span<const vPOINT> points) noexcept override { points_ += points.size(); }
    void DrawShape(const vSHAPE& shape) noexcept override
    {
        ++shapes_;
        points_ += shape.records().size();
    }
    int DrawTextOnLine(const vSTRING& text, const vPOINT&, const short*, int) noexcept override
    {
        return letters_ += text.Length();
    }

    void tell() const { std::printf("%d shapes, %zu points, %d letters\n", shapes_, points_, letters_); }

private:
    int shapes_ = 0, letters_ = 0;
    std::size_t points_ = 0;
};

int main(int argc, char** argv)
{
    document opened;
    if (argc != 2 || !open_file(argv[1], opened).ok() || !opened.picture)
        return 2;
    opened.picture->TextReplay(vTEXTREPLAY::as_text);
    figure_meter meter;
    meter.DrawMetafile(*opened.picture, vRECT(0, 0, 1000, 1000));
    meter.tell();
    return 0;
}
