#!/bin/sh
# Renders the drawings of this folder to ../icons and ../bitmaps. The same drawings give the same bytes.
# Needs rsvg-convert (librsvg2-bin), icotool (icoutils) and convert (imagemagick).
set -eu

cd "$(dirname "$0")"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# draw SVG SIZE: a square picture as $work/SIZE.png
draw() {
    rsvg-convert --width="$2" --height="$2" --output="$work/$2.png" "$1"
}

for small in *-16.svg; do
    name=${small%-16.svg}
    draw "$small" 16
    draw "$small" 24
    draw "$name.svg" 32
    draw "$name.svg" 48
    set -- "$work/16.png" "$work/24.png" "$work/32.png" "$work/48.png"
    if [ -e "$name-256.svg" ]; then
        draw "$name-256.svg" 256
        set -- "$@" "--raw=$work/256.png"
    fi
    icotool --create --output="../icons/$name.ico" "$@"
done

for name in wizard banner; do
    rsvg-convert --output="$work/$name.png" "$name-picture.svg"
    convert "$work/$name.png" -alpha off -type TrueColor "BMP3:../bitmaps/$name.bmp"
done

# The go button's bitmaps keep their transparent corners: 32 bits a pixel, blue, green, red, alpha, the bottom row
# first, behind the headers of a 16 x 16 bitmap of 1024 bytes. convert itself writes such a bitmap only with a later header
# that not every reader knows.
for name in go_normal go_pressed go_disabled; do
    draw "$name.svg" 16
    {
        printf 'BM\066\004\0\0\0\0\0\0\066\0\0\0'
        printf '\050\0\0\0\020\0\0\0\020\0\0\0\001\0\040\0\0\0\0\0\0\004\0\0'
        printf '\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0'
        convert "$work/16.png" -flip -depth 8 BGRA:-
    } >"../bitmaps/$name.bmp"
done
