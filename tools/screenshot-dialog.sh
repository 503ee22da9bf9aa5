#!/usr/bin/env bash
# Screenshots an import dialog in a real window under Xvfb:
#   [CSV=FILE] bash tools/screenshot-dialog.sh [OUT.png] [show_import_dialog options...]
# Without CSV it previews a generated well log. The uniform field dialog:
#   CSV=examples/density_32x24x16.csv bash tools/screenshot-dialog.sh docs/uniform-field-dialog.png \
#     --field "CSVUniformScalarField # 1 , 4 0 32 24 16 28497 0 1 1 0 0 1 0 0 0 0.5 0.5 0.5"
# Needs a build (tools/build.sh), xvfb and imagemagick.
set -euo pipefail
cd "$(dirname "$0")/.."
viewer=build/bin/show_import_dialog
[ -x "$viewer" ] || { echo "no $viewer: run tools/build.sh first" >&2; exit 1; }
out=${1:-docs/import-dialog.png}
shift || true
generated=$(mktemp --suffix=.csv)
geometry=$(mktemp)
trap 'rm -f "$generated" "$geometry"' EXIT
csv=${CSV:-$generated}
if [ -z "${CSV:-}" ]; then
  {
    echo "# wells, one row per sample"
    echo "x,y,z,depth,porosity,name"
    for i in $(seq 1 40); do
      echo "$((i * 10)).5,$((i * 7)).25,-$((i * 3)),$((100 + i)),0.$((i % 9 + 1))2,\"well $i\""
    done
  } >"$generated"
  [ $# -gt 0 ] || set -- 'X*' 'Y*' 'Z*' Value1 Value2
fi
xvfb-run -a -s "-screen 0 1280x800x24" bash -c '
  "$0" "$1" --seconds 6 "${@:4}" >"$3" &
  sleep 3
  import -window root -crop "$(head -n 1 "$3")" +repage "$2"
  wait' "$viewer" "$csv" "$out" "$geometry" "$@"
echo "wrote $out"
