#pragma once

#include "klv/base/types.h"
#include "klv/core/module.h"
#include "klv/core/object.h"

#include <cstdint>

namespace klv {

/// Names a string or another resource of a module.
class vRESID : public vOBJECT {
public:
    /// The module defaults to the library.
    explicit vRESID(std::uint16_t id = 0, const vMODULE* module = nullptr) noexcept;

    [[nodiscard]] std::uint16_t operator()() const noexcept { return id_; }
    [[nodiscard]] HINSTANCE Instance() const noexcept { return instance_; }
    /// The modules are not compared.
    bool operator==(const vRESID& other) const noexcept { return id_ == other.id_; }

private:
    friend class vSYSTEM;
    vRESID(std::uint16_t id, HINSTANCE instance) noexcept
        : instance_(instance)
        , id_(id)
    {
    }

    HINSTANCE instance_;
    std::uint16_t id_;
};

/// Names a control of a dialog.
class vCTRLID : public vOBJECT {
public:
    constexpr explicit vCTRLID(std::uint16_t id = 0) noexcept
        : id_(id)
    {
    }
    constexpr operator std::uint16_t() const noexcept { return id_; }
    constexpr bool operator==(const vCTRLID& other) const noexcept { return id_ == other.id_; }

private:
    std::uint16_t id_;
};

} // namespace klv
