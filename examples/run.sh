#!/usr/bin/env bash
# run.sh PROGRAMS OUTPUT: runs the built examples, each on what an earlier one made, and looks at what they say.
set -euo pipefail
programs=$(cd "$1" && pwd)
rm -rf "$2"
mkdir -p "$2/pictures"
cd "$2"

says() { grep -q -- "$1" <<<"$2" || { echo "expected '$1' in: $2" >&2; exit 1; }; }
is_png() { [ "$(head -c 4 "$1" | tail -c 3)" = PNG ] || { echo "$1 is no PNG" >&2; exit 1; }; }

"$programs/build_picture" pictures/built.vmm pictures/built.bmp
says "box 1000000, disc" "$("$programs/unite_shapes" pictures/united.png)"
is_png pictures/united.png
"$programs/render_file" pictures/built.vmm built.ppm
says "^800 500$" "$(head -2 built.ppm | tail -1)"
says "BMP\|Bitmap" "$("$programs/convert_image" pictures/built.bmp converted.gif)"
says "^GIF8" "$(head -c 6 converted.gif)"
says "a star and a circle" "$("$programs/list_records" pictures/built.vmm)"
says "shapes, .* points, 19 letters" "$("$programs/own_device" pictures/built.vmm)"
"$programs/bytes_to_png" <pictures/built.vmm >bytes.png
is_png bytes.png
rm pictures/built.bmp
says "2 of 2 files rendered" "$("$programs/render_folder" pictures rendered)"
cmp bytes.png rendered/built.png
echo "all examples ran"
