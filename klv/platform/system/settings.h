#pragma once

#include "klv/base/types.h"

#include <string>

/// What a user's machine remembers between runs: the per-user profile and the registry, two plain text files
/// in the user's configuration directory.
namespace klv {

/// The directory of the settings: what set_settings_directory chose, else $KLV_CONFIG_DIR, else
/// $XDG_CONFIG_HOME/klv, else $HOME/.config/klv. Empty when none of them is known; then nothing is kept.
[[nodiscard]] std::string settings_directory();
/// The path of a file there; empty when there is no directory.
[[nodiscard]] std::string settings_file(const char* name);
/// Chooses the directory for this process; null or empty restores the user's own.
void set_settings_directory(const char* directory) noexcept;

} // namespace klv
