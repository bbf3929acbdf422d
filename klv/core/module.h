#pragma once

#include "klv/base/types.h"
#include "klv/core/object.h"

namespace klv {

class vSTRING;

/// A loaded module of the application or of the library.
class vMODULE : public vOBJECT {
public:
    /// Takes the instance that the last Prepare of this thread recorded, stores itself in the recorded slot
    /// and clears both.
    vMODULE() noexcept;
    vMODULE(const vMODULE& other) noexcept;
    vMODULE& operator=(const vMODULE& other) noexcept;
    /// Deletes the process's command string.
    virtual ~vMODULE();

    [[nodiscard]] virtual HINSTANCE GetInstance() const noexcept;

    /// Records what the next vMODULE that this thread constructs takes. command, when not null, becomes the
    /// process's command string.
    static void Prepare(HINSTANCE instance, vMODULE** slot, const char* command) noexcept;

    /// \return the directory of the module's file, without a separator at its end
    [[nodiscard]] vSTRING GetModulePath() const noexcept;

protected:
    explicit vMODULE(HINSTANCE instance) noexcept;
    void SetInstance(HINSTANCE instance) noexcept { instance_ = instance; }
    /// \return a copy of the process's command string
    [[nodiscard]] static vSTRING GetCommand() noexcept;

private:
    HINSTANCE instance_ = nullptr;
};

} // namespace klv
