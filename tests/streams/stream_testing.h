#pragma once

#include "klv/streams/stream.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace klv {

using byte_vector = std::vector<std::uint8_t>;

inline byte_vector to_bytes(std::string_view text) { return {text.begin(), text.end()}; }

/// Everything that the stream holds, read from its start as it stands.
inline byte_vector contents(vSTREAM& stream)
{
    byte_vector bytes(stream.MoveFromEnd(0));
    stream.MoveFromStart(0);
    bytes.resize(stream.ReadPlain(bytes.data(), static_cast<std::uint32_t>(bytes.size())));
    return bytes;
}

inline std::uint32_t write(vSTREAM& stream, const byte_vector& bytes)
{
    return stream.WriteBlock(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

/// One block read of size bytes, cut to what it delivered.
inline byte_vector read_block(vSTREAM& stream, std::uint32_t size)
{
    byte_vector bytes(size);
    bytes.resize(static_cast<std::size_t>(stream.ReadByteString(bytes.data(), size)));
    return bytes;
}

/// Bytes that no compressor shortens, the same in every run.
inline byte_vector noise(std::size_t size, std::uint32_t seed = 1)
{
    byte_vector bytes(size);
    for (auto& byte : bytes) {
        seed = seed * 1664525U + 1013904223U;
        byte = static_cast<std::uint8_t>(seed >> 24);
    }
    return bytes;
}

/// Text-like bytes: words out of a small set in no order.
inline byte_vector wordy(std::size_t size, std::uint32_t seed = 1)
{
    static constexpr std::string_view words[]
        = {"contour", "the", "of ", "segment", "a", "fill", "line", "is"};
    byte_vector bytes;
    for (const auto pick : noise(size, seed)) {
        for (const char c : words[pick % std::size(words)])
            bytes.push_back(static_cast<std::uint8_t>(c));
        bytes.push_back(' ');
        if (bytes.size() >= size)
            break;
    }
    bytes.resize(size);
    return bytes;
}

/// A directory of its own for one test, removed with everything in it.
class scratch_directory {
public:
    scratch_directory()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "klvtestXXXXXX").string();
        path_ = ::mkdtemp(pattern.data());
    }
    ~scratch_directory() { std::filesystem::remove_all(path_); }
    scratch_directory(const scratch_directory&) = delete;
    scratch_directory& operator=(const scratch_directory&) = delete;

    std::string path() const { return path_.string(); }
    std::string path(std::string_view name) const { return (path_ / name).string(); }
    vSTRING name(std::string_view file) const { return vSTRING(path(file).c_str()); }

    byte_vector bytes(std::string_view file) const
    {
        std::ifstream in(path_ / file, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    void put(std::string_view file, const byte_vector& bytes) const
    {
        std::ofstream(path_ / file, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }

private:
    std::filesystem::path path_;
};

} // namespace klv
