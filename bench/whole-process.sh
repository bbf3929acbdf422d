#!/usr/bin/env bash
# Times whole conversions of the WMF files in a directory to PNGs 1000 pixels wide: for each program the median over
# the files of the best of three runs, and the largest peak memory. KLV names the tool (default: the release build's).
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
klv=${KLV:-$root/build/release/klv}
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT

# best_of_three COMMAND...: milliseconds of user and system time, and peak KiB. Empty when the command fails.
best_of_three() {
    python3 - "$@" <<'PY'
import os, resource, subprocess, sys
best, peak = None, 0
for _ in range(3):
    pid = os.spawnvp(os.P_NOWAIT, "env", ["env"] + sys.argv[1:])
    _, status, usage = os.wait4(pid, 0)
    if status:
        sys.exit()
    took = (usage.ru_utime + usage.ru_stime) * 1000
    best = took if best is None else min(best, took)
    peak = max(peak, usage.ru_maxrss)
print(f"{best:.1f} {peak}")
PY
}

measure() {
    local name=$1
    shift
    for file in "$directory"/*.wmf; do
        best_of_three "${@//FILE/$file}" 2>/dev/null
    done | sort -n | awk -v name="$name" '
        NF == 2 { time[++n] = $1; if ($2 > peak) peak = $2 }
        END { if (n) printf "%-28s %4d files  median %6.1f ms  peak %6.1f MiB\n", name, n, time[int((n + 1) / 2)], peak / 1024 }'
}

directory=$1
measure "klv, aliased" "$klv" convert FILE "$out/a.png" --width 1000 --antialias 1
measure "klv, anti-aliased" "$klv" convert FILE "$out/a.png" --width 1000
if command -v wmf2gd >/dev/null; then
    measure "wmf2gd" wmf2gd -t png --maxpect --maxwidth=1000 --maxheight=1000 -o "$out/b.png" FILE
fi
