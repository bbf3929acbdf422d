#include "klv/filters/vector_filter.h"

#include "klv/metafiles/metafile.h"
#include "klv/streams/stream.h"

namespace klv {

oFILTER_STATUS oLAFILTER::Convert(vARCHIVE* in, vARCHIVE* out)
{
    if (!in || !out || !in->IsStream() || !out->IsStream())
        return SetStatus(oFILTER_FAILED);
    vMETAFILE picture(*static_cast<vSTREAM*>(out));
    Convert(*in, &picture);
    return LastStatus();
}

oFILTER_STATUS oLAFILTER::Convert(vARCHIVE&, vMETAFILE*) { return SetStatus(oFILTER_FAILED); }

oFILTER_STATUS oLAFILTER::Convert(vMETAFILE&, vSTREAM&) { return SetStatus(oFILTER_FAILED); }

int oLAFILTER::GetMetafileInterface(vSTREAM&, vMETAFILE**) { return 0; }

void oLAFILTER::SetProgressInd(oPROGRESSLA* progress)
{
    oFILTER::SetProgressInd(static_cast<oPROGRESS*>(progress));
}

} // namespace klv
