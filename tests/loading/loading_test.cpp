// What a program gets that loads the library and asks it for nothing.
#include "tests/build_folder.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

using names = std::set<std::string>;

// Files that are mapped, with the shared libraries that any library may need left out.
names mapped_files()
{
    names found;
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        const auto path = line.find('/');
        if (path != std::string::npos && line.find(".so") == std::string::npos)
            found.insert(line.substr(path));
    }
    return found;
}

names open_files()
{
    names found;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code gone; // the descriptor of the listing itself
        const std::string target = fs::read_symlink(entry.path(), gone).string();
        if (!gone && target.find("/proc/") == std::string::npos)
            found.insert(entry.path().filename().string() + " " + target);
    }
    return found;
}

std::ptrdiff_t thread_count()
{
    return std::distance(fs::directory_iterator("/proc/self/task"), fs::directory_iterator());
}

/// The settings of a user who has a profile; notices whoever looks into the directory.
class watched_settings {
public:
    watched_settings()
        : directory_(testing::TempDir() + "klv-loading-" + std::to_string(getpid()))
        , watch_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
    {
        fs::create_directories(directory_);
        std::ofstream(directory_ + "/profile.ini") << "[VirtualMachine]\nTraceLevel=7\n";
        setenv("KLV_CONFIG_DIR", directory_.c_str(), 1);
        inotify_add_watch(watch_, directory_.c_str(), IN_OPEN | IN_CREATE);
    }
    watched_settings(const watched_settings&) = delete;
    watched_settings& operator=(const watched_settings&) = delete;
    ~watched_settings()
    {
        close(watch_);
        fs::remove_all(directory_);
    }

    [[nodiscard]] bool touched() const
    {
        alignas(inotify_event) char events[4096];
        return read(watch_, events, sizeof events) > 0;
    }

private:
    std::string directory_;
    int watch_;
};

TEST(Loading, OpensNothingMapsNothingAndStartsNothing)
{
    const watched_settings settings;
    const names files = open_files();
    const names maps = mapped_files();
    const std::ptrdiff_t threads = thread_count();

    void* const library
        = dlopen((klv::test::build_folder() + "/libKLV006.so").c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    EXPECT_EQ(open_files(), files);
    EXPECT_EQ(mapped_files(), maps);
    EXPECT_EQ(thread_count(), threads);
    EXPECT_FALSE(settings.touched());

    // The user's settings are read when they are asked for: klv::vSYSTEM::GetTraceLevel().
    void* const trace_level = dlsym(library, "_ZN3klv7vSYSTEM13GetTraceLevelEv");
    ASSERT_NE(trace_level, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uint16_t (*)()>(trace_level)(), 7);
    EXPECT_TRUE(settings.touched());
}

} // namespace
