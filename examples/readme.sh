#!/usr/bin/env bash
# readme.sh: the first sample of the README is an example, word for word.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
diff <(awk '/^```cpp$/ { inside = 1; next } /^```$/ && inside { exit } inside' ../README.md) render_file.cpp
