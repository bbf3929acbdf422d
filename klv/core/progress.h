#pragma once

#include "klv/core/object.h"

#include <cstdint>

namespace klv {

/// How long work reports what it has done. Applications derive from it and override oUpdate to show the
/// figure; the library calls the other operations. Reports come on the caller's thread.
class oPROGRESS : public vOBJECT {
public:
    oPROGRESS() = default;
    virtual ~oPROGRESS() = default;

    /// Sets the value that stands for "all done".
    virtual void oFullScale(std::uint32_t full_scale);
    /// Adds n to the progress; reports at most once in each tick increment.
    virtual void oIncrement(std::uint32_t n);
    /// Reports value, at most once in each tick increment. The stored progress changes only by oUpdate.
    virtual void oSet(std::uint32_t value);
    /// Begins: progress 0, a report at most every 125 ms.
    virtual void oStart();
    virtual void oTerminate();
    /// Asked when memory is out; 0 is "give up".
    virtual int OutOfMemory();
    /// \return 1 when the user asks to stop: the Escape key is the pending key of the host.
    virtual int Stop();
    /// Shows value; the base class stores it as the progress.
    virtual void oUpdate(std::uint32_t value);

    std::uint32_t FullScale() const { return full_scale_; }
    std::uint32_t Progress() const { return progress_; }
    /// Tick count of the last report, milliseconds.
    std::uint32_t TickCount() const { return last_report_; }
    /// Shortest time between two reports, milliseconds.
    std::uint32_t TickIncrement() const { return tick_increment_; }
    void TickIncrement(std::uint32_t milliseconds) { tick_increment_ = milliseconds; }

private:
    void report(std::uint32_t value);

    std::uint32_t progress_ = 0;
    std::uint32_t full_scale_ = 0;
    std::uint32_t last_report_ = 0;
    std::uint32_t tick_increment_ = 0;
};

} // namespace klv
