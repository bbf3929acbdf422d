#pragma once

#include <string>
#include <vector>

#include "tools/klv/render.h"

namespace klv::tool {

// The commands of the tool. Each answers the exit status: 0 done, 1 when a file failed.

struct convert_options {
    std::vector<std::string> inputs;
    std::string output; ///< a file, "-", or a directory for several inputs
    std::string format; ///< extension of the outputs where the output's name does not say it
    render_options render;
};

int convert(const convert_options& options);
int info(const std::vector<std::string>& files, bool as_json);
int dump(const std::vector<std::string>& files);
int formats();
int demo(const std::string& output, const render_options& render);

} // namespace klv::tool
