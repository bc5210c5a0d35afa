#!/usr/bin/env bash
# Makes the programs for Windows: build/windows/bin/permora.exe with its help and permora-cli.exe, and
# build/windows/permora-VERSION-windows.zip with them, their documents, their tests and run.cmd. Two builds of one commit
# give the same bytes.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
# shellcheck source=tools/packages.sh
source tools/packages.sh
# shellcheck source=tools/build.sh
source tools/build.sh

EnsurePackages "${buildPackages[@]}" "${windowsPackages[@]}"
BuildPreset windows
out=build/windows
for program in permora permora-cli; do
    tools/check_windows_program.sh $out/bin/$program.exe
done

version=$(sed -nE 's/^CMAKE_PROJECT_VERSION:STATIC=//p' $out/CMakeCache.txt)
folder=$out/zip/permora-$version
rm -rf "$out/zip"
mkdir -p "$folder/bin" "$folder/tests"
cp -r $out/bin/permora.exe $out/bin/permora-cli.exe $out/bin/ZELHELP.chm $out/bin/help "$folder/bin/"
cp -r LICENSE docs/guide.md docs/pictures docs/terminal.md docs/json.md docs/permora.schema.json docs/platform.md docs/policy.md \
    docs/saved-lists.md docs/windows.md "$folder/"
cp $out/tests/windows_*_test.exe tests/windows/run.cmd "$folder/tests/"
# The time of the commit, for the same bytes from the same sources.
stamp=$(git log -1 --format=%ct 2>/dev/null || echo 0)
find "$out/zip" -exec touch --no-dereference --date="@$stamp" {} +
archive=$PWD/$out/permora-$version-windows.zip
rm -f "$archive"
(cd "$out/zip" && find "permora-$version" -type f | LC_ALL=C sort | TZ=UTC zip --quiet -X -@ "$archive")
echo "$archive"
