#pragma once

#include "tests/build_folder.h"
#include "tests/filters/wmf_builder.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/wait.h>

/// The built tool as a user runs it.
namespace klv::test {

struct outcome {
    int status = -1;
    std::string output; ///< standard output and standard error together
};

inline outcome run_command(const std::string& command)
{
    std::FILE* const pipe = popen((command + " 2>&1").c_str(), "r");
    outcome result;
    std::array<char, 4096> chunk{};
    while (const std::size_t got = std::fread(chunk.data(), 1, chunk.size(), pipe))
        result.output.append(chunk.data(), got);
    const int status = pclose(pipe);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

inline outcome run(const std::string& arguments)
{
    return run_command(klv::test::build_folder() + "/klv " + arguments);
}

/// A directory of the test's own, with a picture in it, good.wmf.
class CommandLine : public testing::Test {
protected:
    void SetUp() override
    {
        directory_ = std::filesystem::path(testing::TempDir())
            / (std::string("klv_") + testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::remove_all(directory_);
        std::filesystem::create_directories(directory_);
        auto picture = test::wmf_builder().placeable(0, 0, 1000, 500, 100).window(0, 0, 1000, 500);
        picture.pen(0, 30, 0xFF).brush(0, 0x00FF00).select(0).select(1).rectangle(100, 100, 600, 400);
        write("good.wmf", picture.build());
    }
    void TearDown() override { std::filesystem::remove_all(directory_); }

    void write(const std::string& name, const std::vector<std::uint8_t>& bytes)
    {
        std::ofstream(path(name), std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    std::string path(const std::string& name) const { return (directory_ / name).string(); }
    std::string contents(const std::string& name) const
    {
        std::ifstream file(path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::filesystem::path directory_;
};

} // namespace klv::test
