#pragma once

#include "klv/core/progress.h"

#include <cstdint>
#include <string>

namespace klv::tool {

/// A line on standard error that shows how far long work is, when standard error is a terminal. It appears
/// with the library's first report, so short work shows nothing. Also asks the work to stop after Ctrl-C.
class progress_bar : public oPROGRESS {
public:
    explicit progress_bar(std::string label);
    ~progress_bar() override { clear(); }

    void oUpdate(std::uint32_t value) override;
    void oTerminate() override { clear(); }
    int Stop() override;

private:
    void clear();

    std::string label_;
    bool on_terminal_;
    bool shown_ = false;
};

} // namespace klv::tool
