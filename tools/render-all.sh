#!/usr/bin/env bash
# Draws every window of the workbench after a realistic action into OUTDIR, one
# PNG each, headless. Run it before and after a change to drawing, a window or a
# numeric routine, then compare the two folders pixel for pixel:
#
#   tools/render-all.sh /tmp/before      # on the old build
#   tools/render-all.sh /tmp/after       # on the new build
#   tools/render-all.sh --compare /tmp/before /tmp/after
#
# BUILD (default: build/ of this checkout) names the build tree whose bin/ holds
# the program, Tarnic.dll and the examples.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${BUILD:-$root/build}"

if [ "${1:-}" = "--compare" ]; then
    [ $# -eq 3 ] || { echo "usage: $0 --compare DIR1 DIR2" >&2; exit 2; }
    status=0
    for a in "$2"/*.png; do
        b="$3/$(basename "$a")"
        if [ ! -f "$b" ]; then
            echo "missing: $b"; status=1
        elif ! python3 - "$a" "$b" <<'EOF'
import sys, zlib, struct
def pixels(path):
    # Decodes the PNGs that Qt writes (8-bit RGB or RGBA, non-interlaced).
    data = open(path, 'rb').read()
    pos, idat, width, height = 8, b'', 0, 0
    while pos < len(data):
        n, kind = struct.unpack('>I4s', data[pos:pos + 8])
        body = data[pos + 8:pos + 8 + n]
        if kind == b'IHDR':
            width, height, depth, colour = struct.unpack('>IIBB', body[:10])
        elif kind == b'IDAT':
            idat += body
        pos += 12 + n
    return width, height, zlib.decompress(idat)
sys.exit(0 if pixels(sys.argv[1]) == pixels(sys.argv[2]) else 1)
EOF
        then
            echo "differs: $(basename "$a")"; status=1
        fi
    done
    [ $status -eq 0 ] && echo "all pictures equal"
    exit $status
fi

out="$(mkdir -p "${1:?usage: $0 OUTDIR | --compare DIR1 DIR2}" && cd "$1" && pwd)"
export QT_QPA_PLATFORM=offscreen
cd "$build/bin"
render() { "$build/tools/render-window" "$out/$1.png" "${@:2}" >/dev/null; }

render main
render main-loaded examples/ar2_peak.dat
render spectra examples/ar2_peak.dat launch
render spectra-zoom examples/ar2_peak.dat launch spzoom
render bandpass examples/ar2_peak.dat launch spzoom bandpass
render signal examples/two_sines_trend.dat signal trend:40
render signal-poly examples/two_sines_trend.dat signal trend:200:2
render fragment examples/two_sines_trend.dat signal cursors:3000:12000 zoom harm
render maxwave examples/two_sines_trend.dat signal zoom wave
render wtmm examples/random_walk.dat signal cursors:0:6000 zoom wtmm
render mfdfa examples/random_walk.dat signal zoom mfdfa
render morlet examples/two_sines_trend.dat signal zoom morlet
render heisbox examples/two_sines_trend.dat signal zoom heis:6:2
render svanar examples/two_sines_trend.dat svanar
render svanar-set examples/ar2_peak.dat svanar:512:64:20
render wavedec examples/two_sines_trend.dat wavepack:5:2
render wavespect examples/two_sines_trend.dat wavepack:5:2 show:WaveSpectForm
render wavebasis examples/two_sines_trend.dat wavepack:5:3 show:WaveBasisForm
render wavefilt examples/two_sines_trend.dat wavefilt
render wavefiltzoom examples/two_sines_trend.dat wavefilt wavefiltzoom
render help examples/ar2_peak.dat help:0
render blockscheme examples/ar2_peak.dat help:1
render wtmm-help examples/ar2_peak.dat help:2
render mfdfa-help examples/ar2_peak.dat help:3
echo "$(ls "$out" | wc -l) pictures in $out"
