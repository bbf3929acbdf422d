#pragma once

#include <span>

namespace klv::imaging {

/// A shared library that is looked for by name when a file needs it, and that stays loaded. The module does
/// not link it: without it the formats that it serves are missing and all others work.
class runtime_library {
public:
    /// Loads the first of these that is installed.
    [[nodiscard]] bool load(std::span<const char* const> names);

    /// Looks up a function of the library, or of one that it depends on.
    /// \return false when there is none of this name
    template <class Function> [[nodiscard]] bool find(const char* name, Function*& function) const
    {
        function = reinterpret_cast<Function*>(symbol(name));
        return function != nullptr;
    }

private:
    [[nodiscard]] void* symbol(const char* name) const;

    void* library_ = nullptr;
};

} // namespace klv::imaging
