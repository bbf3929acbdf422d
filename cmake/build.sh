#!/usr/bin/env bash
# build.sh PRESET TARGET...: installs what is missing, configures once and builds, saying little when there is
# nothing to do.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
preset=$1
shift

"$root/cmake/install-packages.sh" "$preset"
tree="$root/build/$preset"
log="$root/build/configure-$preset.log"
if [ ! -f "$tree/build.ninja" ]; then
    mkdir -p "$root/build"
    # Warnings are errors in CI.
    (cd "$root" && cmake --preset "$preset" ${CI:+-DKLV_WERROR=ON} >"$log" 2>&1) || { cat "$log" >&2; exit 1; }
fi
exec cmake --build "$tree" --target "$@"
