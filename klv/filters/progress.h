#pragma once

#include "klv/core/progress.h"

namespace klv {

class oRASTERIMAGE;

/// Progress of a bitmap conversion. The hook lets an application take part; the library does not call it.
class oPROGRESSBM : public oPROGRESS {
public:
    int CannotHandleColourDepth(const oRASTERIMAGE&, oRASTERIMAGE*) { return 0; }
};

/// Progress of a vector conversion. The hooks let an application take part; the library does not call them.
class oPROGRESSLA : public oPROGRESS {
public:
    int oCannotHandleShape() { return 0; }
    int oCannotHandleText() { return 0; }
    int oCannotHandleBezPath() { return 0; }
    int oCannotHandleGradFill() { return 0; }
};

} // namespace klv
