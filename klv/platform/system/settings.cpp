#include "klv/platform/system/settings.h"

#include <cstdlib>
#include <mutex>

namespace klv {

namespace {

struct directory_choice {
    std::mutex guard;
    std::string directory;
};

directory_choice& choice()
{
    static directory_choice made;
    return made;
}

std::string chosen_directory()
{
    const std::scoped_lock lock(choice().guard);
    return choice().directory;
}

std::string environment(const char* name)
{
    const char* const value = std::getenv(name);
    return value ? value : "";
}

} // namespace

std::string settings_directory()
{
    if (std::string directory = chosen_directory(); !directory.empty())
        return directory;
    if (std::string directory = environment("KLV_CONFIG_DIR"); !directory.empty())
        return directory;
    if (const std::string base = environment("XDG_CONFIG_HOME"); !base.empty())
        return base + "/klv";
    if (const std::string home = environment("HOME"); !home.empty())
        return home + "/.config/klv";
    return {};
}

std::string settings_file(const char* name)
{
    const std::string directory = settings_directory();
    return directory.empty() ? "" : directory + '/' + name;
}

void set_settings_directory(const char* directory) noexcept
{
    try {
        std::string wanted = directory ? directory : "";
        const std::scoped_lock lock(choice().guard);
        choice().directory = std::move(wanted);
    } catch (const std::bad_alloc&) {
        // The directory stays as it was.
    }
}

} // namespace klv
