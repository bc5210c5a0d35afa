#!/bin/sh
# Renders the drawings of this folder to ../icons, ../bitmaps and the icons in packaging/desktop. The same drawings give the same bytes.
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

# The program's icon once more, as single pictures for desktops.
for size in 16 22 24 32 48 64 96 128 256 512; do
    drawing=permora-256.svg
    [ "$size" -gt 48 ] || drawing=permora.svg
    [ "$size" -gt 24 ] || drawing=permora-16.svg
    draw "$drawing" "$size"
    cp "$work/$size.png" "../../../packaging/desktop/icons/permora-$size.png"
done

for name in wizard banner; do
    rsvg-convert --output="$work/$name.png" "$name-picture.svg"
    convert "$work/$name.png" -alpha off -type TrueColor "BMP3:../bitmaps/$name.bmp"
done

# The go button's bitmaps keep their transparent corners, so they have the later header, which tells of the alpha channel.
for name in go_normal go_pressed go_disabled; do
    draw "$name.svg" 16
    convert "$work/16.png" "../bitmaps/$name.bmp"
done
