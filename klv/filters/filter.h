#pragma once

#include "klv/core/object.h"
#include "klv/core/string.h"
#include "klv/filters/format_identity.h"
#include "klv/filters/progress.h"
#include "klv/streams/archive.h"

namespace klv {

class vSTREAM;

/// What a filter operation answers. A filter also keeps the last one; see oFILTER::LastStatus.
enum oFILTER_STATUS : int {
    oFILTER_OK = 0,
    oFILTER_FAILED = 1, ///< not recognised, not attempted, or failed without a more precise code
    oFILTER_RECOGNISED = 2, ///< some recognisers answer this instead of 0
    oFILTER_NO_MEMORY = 3, ///< an allocation failed, or the bitmap refused to store lines
    oFILTER_BAD_DATA = 4, ///< the input holds a value that the reader does not accept
    oFILTER_READ_ERROR = 5, ///< the stream failed or ended early, or an archive argument is missing
    oFILTER_UNSUPPORTED = 6, ///< a variant or an operation that the filter does not handle
    oFILTER_WRITE_ERROR = 7, ///< the output did not receive the whole result
    oFILTER_CANCELLED = 8, ///< the progress indicator asked to stop
};

/// The sentence that a user is told for a status.
const char* describe(oFILTER_STATUS status) noexcept;

enum oFILTER_TYPE : int {
    oFILTER_NONE = 0,
    oFILTER_METAFILE = 1, ///< vector formats, read into a recorded picture
    oFILTER_BITMAP = 2, ///< raster formats, read into a bitmap
    oFILTER_POSTSCRIPT = 3, ///< a preview bitmap and PostScript text
};

/// Root of what a filter list manages.
class oFILTER_MAN_OBJECT : public vOBJECT {
public:
    explicit oFILTER_MAN_OBJECT(int release)
        : release_(release)
    {
    }
    virtual ~oFILTER_MAN_OBJECT() = default;
    virtual oFILTER_TYPE Type() const { return oFILTER_NONE; }
    int Release() const { return release_; }

private:
    int release_;
};

/// Reads one foreign file format into the library's own objects, and for some formats writes it.
class oFILTER : public oFILTER_MAN_OBJECT {
public:
    oFILTER();

    /// Recognises the format. oFILTER_FAILED is "not mine"; every other answer is "mine".
    virtual oFILTER_STATUS CheckStream(vARCHIVE& in);
    /// Converts a file of the format into the library's own stored form, or the other way round.
    virtual oFILTER_STATUS Convert(vARCHIVE* in, vARCHIVE* out);
    /// Bits per pixel, at most, that the format is read and written with.
    virtual int SetMaxColourDepth(int depth) { return max_colour_depth_ = depth; }
    virtual int GetMaxColourDepth() const { return max_colour_depth_; }
    virtual int ImportColourDepths(int depth) const;
    virtual int ExportColourDepths(int depth) const;
    virtual int DoesExport() const { return 1; }
    virtual int DoesImport() const { return 1; }
    /// The format's file extension in upper case, without the dot.
    virtual vSTRING GetID() const { return vSTRING(format_->id); }
    /// The format's display name, from the library's string resources.
    virtual vSTRING GetDescription() const;

    void SetProgressInd(oPROGRESS* progress) { progress_ = progress; }
    oPROGRESS* RemoveProgressInd();

    /// True when the stream's name ends with this format's extension, in any letter case. Sets the last
    /// status to OK or FAILED accordingly; formats without a recogniser of their contents answer that.
    int CheckExtension(vSTREAM* stream);
    /// True unless CheckStream answers FAILED. The stream's position is kept.
    int CanTranslate(vSTREAM* stream);

    /// What the filter's format is called and how its files are told; without a name for a filter that an
    /// application derived without it.
    const format_identity& Format() const noexcept { return *format_; }

    oFILTER_STATUS LastStatus() const { return last_status_; }

protected:
    /// A filter of a format, whose description becomes a string resource of the library. The identity is a
    /// constant that outlives the process's use of string resources.
    explicit oFILTER(const format_identity& format);

    oFILTER_STATUS SetStatus(oFILTER_STATUS status) { return last_status_ = status; }
    /// The answer of recognisers that tell "mine" by oFILTER_RECOGNISED; the last status is then OK.
    oFILTER_STATUS Recognised(bool mine)
    {
        SetStatus(mine ? oFILTER_OK : oFILTER_FAILED);
        return mine ? oFILTER_RECOGNISED : oFILTER_FAILED;
    }
    oPROGRESS* progress() const { return progress_; }

private:
    friend class filter_set;

    const format_identity* format_;
    oFILTER* next_ = nullptr; // in the set that owns the filter
    oPROGRESS* progress_ = nullptr;
    oFILTER_STATUS last_status_ = oFILTER_OK;
    int max_colour_depth_ = 24;
};

} // namespace klv
