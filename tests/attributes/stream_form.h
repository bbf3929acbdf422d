#pragma once

#include "klv/streams/memory_stream.h"

#include "tests/streams/stream_testing.h"

namespace klv {

/// The bytes of value's stream form.
template <typename T> byte_vector stream_form(const T& value)
{
    vMEMSTREAM stream;
    value >> stream;
    return contents(stream);
}

/// A memory stream of these bytes, at its start.
class loaded_stream : public vMEMSTREAM {
public:
    explicit loaded_stream(const byte_vector& bytes)
    {
        WritePlain(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
        MoveFromStart(0);
    }
};

} // namespace klv
