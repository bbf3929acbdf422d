#pragma once

#include "klv/bitmaps/memory_dib.h"
#include "klv/imaging/imaging_api.h"
#include "klv/platform/module_table.h"

#include "tests/build_folder.h"

#include <gtest/gtest.h>

namespace klv::test {

/// Tests that use the imaging module: its names stand for the module of the build.
class imaging_test : public ::testing::Test {
protected:
    imaging_test()
    {
        for (const char* name : {imaging::kernel_module_name, imaging::file_module_name})
            MapModule(name, klv::test::imaging_module_path().c_str());
    }
    ~imaging_test() override
    {
        for (const char* name : {imaging::kernel_module_name, imaging::file_module_name})
            UnregisterModule(name);
    }
};

/// The colours of a bitmap as 0xRRGGBB, top row first.
inline std::vector<std::vector<int>> colours_of(const oDIB& source)
{
    const oMEMDIB dib(source, 0, 0, 24, 0, 0);
    std::vector<std::vector<int>> rows;
    for (int y = dib.Height() - 1; y >= 0 && dib.HasPixels(); --y) {
        std::vector<int> row;
        for (int x = 0; x < dib.Width(); ++x) {
            const std::uint8_t* p = dib.line(y).data() + 3 * x;
            row.push_back(p[2] << 16 | p[1] << 8 | p[0]);
        }
        rows.push_back(row);
    }
    return rows;
}

} // namespace klv::test
