#!/usr/bin/env bash
# Times the same 24-megapixel picture (6000 x 4000, RGB) through vellumark-cli
# and through ImageMagick, libvips and OpenCV: the Gaussian blur and the box
# blur at a small and a large radius. Each command is run whole (load, filter,
# save, uncompressed files) three times and the best time is kept; the same
# tool's plain load and save is timed too, and what remains after taking it off
# is the filter's own time. OpenCV is timed inside Python around the call.
# Prints one table with the ratio of each peer's filter time to ours (above 1:
# we are faster).
#
# Our triangular kernel of radius r has the spread of a Gaussian of sigma
# (r + 1) / sqrt(6) per direction: that is the sigma the peers get. Our box of
# radius r is a (2r + 1)^2 mean: the peers get the same square.
#
# Usage: bench/peers.sh [path to vellumark-cli]   (Release build recommended)
# Needs: imagemagick, libvips-tools, python3-opencv (scripts/setup.sh).
set -euo pipefail

CLI=${1:-build/cli/vellumark-cli}
PY=/usr/bin/python3 # the system's, which has cv2; a pyenv python may shadow python3
W=6000
H=4000
RUNS=3
LIMIT=${LIMIT:-120} # seconds a single command may take; slower ones show as ">LIMIT"
for tool in "$CLI" convert vips "$PY"; do
    command -v "$tool" >/dev/null || { echo "peers.sh: $tool not found" >&2; exit 2; }
done
"$PY" -c 'import cv2' 2>/dev/null || { echo "peers.sh: python3-opencv is missing" >&2; exit 2; }

WORK=$(mktemp -d)
trap 'rm -rf "$WORK"' EXIT

echo "Making a ${W}x${H} picture..."
convert -size ${W}x${H} gradient:navy-orange \( -size ${W}x${H} xc:gray50 -seed 1 +noise Gaussian \) \
    -compose overlay -composite -depth 8 -type TrueColor "$WORK/in.ppm"
convert "$WORK/in.ppm" -type TrueColor BMP3:"$WORK/in.bmp"

# Best wall time of RUNS runs of a command, in milliseconds; "-" when it
# fails, ">LIMITs" when it runs out of time. A run of over ten seconds is not
# repeated.
best() {
    local best="" start end t status
    for ((i = 0; i < RUNS; i++)); do
        start=$(date +%s%N)
        status=0
        timeout "$LIMIT" "$@" >/dev/null 2>&1 || status=$?
        end=$(date +%s%N)
        if ((status == 124)); then
            echo ">${LIMIT}s"
            return
        elif ((status != 0)); then
            echo "-"
            return
        fi
        t=$(((end - start) / 1000000))
        if [[ -z "$best" || $t -lt $best ]]; then best=$t; fi
        ((t > 10000)) && break
    done
    echo "$best"
}

# A separable box mask for vips: one row of 2r + 1 ones, scaled by their sum.
box_mask() {
    local r=$1 n=$((2 * $1 + 1)) row=""
    for ((i = 0; i < n; i++)); do row+="1 "; done
    printf '%d 1 %d 0\n%s\n' "$n" "$n" "$row" >"$WORK/box$r.mat"
}

sigma() { "$PY" -c "import math; print(round(($1 + 1) / math.sqrt(6), 3))"; }

declare -A T
echo "Timing load and save..."
T[ours,io]=$(best "$CLI" convert "$WORK/in.bmp" "$WORK/out.bmp")
T[magick,io]=$(best convert "$WORK/in.ppm" "$WORK/out.ppm")
T[vips,io]=$(best vips copy "$WORK/in.ppm" "$WORK/out.ppm")

CASES=("gauss 10" "gauss 100" "box 10" "box 100")
for c in "${CASES[@]}"; do
    read -r kind r <<<"$c"
    echo "Timing $kind blur, radius $r..."
    if [[ $kind == gauss ]]; then
        s=$(sigma "$r")
        T[ours,$c]=$(best "$CLI" apply "$WORK/in.bmp" "$WORK/out.bmp" GuassBlur "Radius=$r")
        T[magick,$c]=$(best convert "$WORK/in.ppm" -gaussian-blur "0x$s" "$WORK/out.ppm")
        T[magickfast,$c]=$(best convert "$WORK/in.ppm" -blur "0x$s" "$WORK/out.ppm")
        T[vips,$c]=$(best vips gaussblur "$WORK/in.ppm" "$WORK/out.ppm" "$s")
    else
        box_mask "$r"
        T[ours,$c]=$(best "$CLI" apply "$WORK/in.bmp" "$WORK/out.bmp" BoxBlur "Radius=$r")
        T[magick,$c]=$(best convert "$WORK/in.ppm" -define convolve:scale='!' -morphology Convolve "Square:$r" \
            "$WORK/out.ppm")
        T[magickfast,$c]="-"
        T[vips,$c]=$(best vips convsep "$WORK/in.ppm" "$WORK/out.ppm" "$WORK/box$r.mat")
    fi
done

echo "Timing OpenCV..."
OPENCV=$("$PY" - "$WORK/in.ppm" "$RUNS" <<'EOF'
import math, sys, time
import cv2
img = cv2.imread(sys.argv[1])
runs = int(sys.argv[2])
def best(f):
    t = None
    for _ in range(runs):
        s = time.perf_counter(); f(); e = time.perf_counter()
        t = e - s if t is None else min(t, e - s)
    return round(t * 1000)
for r in (10, 100):
    s = (r + 1) / math.sqrt(6)
    print("gauss", r, best(lambda: cv2.GaussianBlur(img, (0, 0), s, borderType=cv2.BORDER_REPLICATE)))
for r in (10, 100):
    print("box", r, best(lambda: cv2.blur(img, (2 * r + 1, 2 * r + 1), borderType=cv2.BORDER_REPLICATE)))
EOF
)
while read -r kind r ms; do T[opencv,$kind $r]=$ms; done <<<"$OPENCV"

# The filter's own time: the whole command less the tool's load and save.
own() {
    local tool=$1 c=$2 io_tool=$1
    [[ $tool == magickfast ]] && io_tool=magick
    local total=${T[$tool,$c]}
    if [[ $total == "-" || $total == ">"* ]]; then echo "$total"; return; fi
    if [[ $tool == opencv ]]; then echo "$total"; return; fi
    local io=${T[$io_tool,io]}
    local d=$((total - io))
    ((d < 1)) && d=1
    echo "$d"
}
ratio() {
    if [[ $1 == "-" ]]; then echo "-"; return; fi
    if [[ $1 == ">"* ]]; then awk -v a="${1//[^0-9]/}" -v b="$2" 'BEGIN { printf ">%.0f", a * 1000 / b }'; return; fi
    awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", a / b }'
}

echo
echo "Picture ${W}x${H} RGB, $(nproc) cores. Filter time in ms (whole command less load and save;"
echo "OpenCV in-process); in brackets the peer's time over ours."
echo "Load and save alone: ours ${T[ours,io]} ms, ImageMagick ${T[magick,io]} ms, libvips ${T[vips,io]} ms."
printf '%-12s %10s %18s %18s %18s %18s\n' "filter" "VelluMark" "IM -gaussian/box" "IM -blur" "libvips" "OpenCV"
for c in "${CASES[@]}"; do
    ours=$(own ours "$c")
    line=$(printf '%-12s %10s' "$c" "$ours")
    for tool in magick magickfast vips opencv; do
        t=$(own $tool "$c")
        line+=$(printf ' %18s' "$t ($(ratio "$t" "$ours"))")
    done
    echo "$line"
done
