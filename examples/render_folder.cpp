// A folder rendered by a pool of threads: render_folder FOLDER OUTPUT-FOLDER

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <thread>
#include <vector>

#include <klv/rendering/document.h>
#include <klv/rendering/save.h>

namespace files = std::filesystem;

// Each thread has its own document; nothing of the library needs a lock.
static bool render_one(const files::path& in, const files::path& folder)
{
    klv::document opened;
    auto status = klv::open_file(in.native(), opened);
    if (status.ok())
        status = klv::save(opened, (folder / in.stem()).native() + ".png");
    if (!status.ok())
        std::fprintf(stderr, "%s: %s\n", in.c_str(), status.words());
    return status.ok();
}

int main(int argc, char** argv)
{
    if (argc != 3 || !files::is_directory(argv[1]))
        return 2;
    std::vector<files::path> inputs;
    for (const auto& entry : files::directory_iterator(argv[1]))
        inputs.push_back(entry.path());
    files::create_directories(argv[2]);

    std::atomic<std::size_t> next = 0, done = 0;
    std::vector<std::jthread> pool(std::max(1U, std::thread::hardware_concurrency()));
    for (auto& thread : pool)
        thread = std::jthread([&] {
            for (std::size_t i = next++; i < inputs.size(); i = next++)
                done += render_one(inputs[i], argv[2]);
        });
    pool.clear(); // waits for them
    std::printf("%zu of %zu files rendered\n", done.load(), inputs.size());
    return done == inputs.size() ? 0 : 1;
}
