#!/bin/sh
# vesk_import as a user runs it: the fixture to tables, vesk on them, the named report; exit statuses.
#   vesk_import_cli.sh VESK_IMPORT VESK SOURCE_DIR
set -u
imp=$1
vesk=$2
d=$3/data/vesk/import
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }

out=$("$imp" --obo "$d/mini.obo" --gaf "$d/mini_crlf.gaf.gz" --gmt "$d/mini.gmt" --background "$d/background.txt" \
      --exclude-evidence IEA,ND --out "$tmp/run" 2>"$tmp/log") || fail "import status $?"
[ "$out" = "cd $tmp/run && vesk run.opt" ] || fail "printed '$out'"
for t in genes.tab chip.txt gotype.tab clskey.tab clsassoc.tab sets.tab set_names.tsv terms.tsv; do
  cmp -s "$tmp/run/$t" "$d/expected/iea_bg/$t" || fail "$t differs from expected/iea_bg"
done
grep -q "1 unknown genes left out (SET1:ZZZ)" "$tmp/log" || fail "unknown genes not reported"
(cd "$tmp/run" && sed 's/MinClsSize = 5/MinClsSize = 1/' run.opt >small.opt && "$vesk" small.opt 2>/dev/null) ||
  fail "vesk on run.opt"
[ -f "$tmp/run/report.tsv" ] || fail "no report"
(cd "$tmp/run" && "$imp" --report report.tsv >/dev/null 2>&1) || fail "report mode status $?"
head -1 "$tmp/run/report_named.tsv" | grep -q "^set_name	term_id	term_name	namespace	overlap	fraction	log10_p	log10_corrected_p$" ||
  fail "named table header"
grep -q "</svg>" "$tmp/run/report_plot.svg" || fail "no plot"

expect() { # status, then the command
  want=$1; shift
  "$@" >"$tmp/o" 2>"$tmp/e"; got=$?
  [ "$got" = "$want" ] || fail "status $got, not $want: $*"
}
expect 0 "$imp" --help
expect 0 "$imp" --version
grep -q "^vesk_import [0-9]" "$tmp/o" || fail "--version output"
expect 1 "$imp"
expect 1 "$imp" --obo "$d/mini.obo" --gaf x --pairs y --gmt "$d/mini.gmt" --out "$tmp/x"
expect 1 "$imp" --obo "$d/mini.obo" --frobnicate
expect 1 "$imp" --obo
expect 1 "$imp" --report r --top 0
printf '[Term]\nid: GO:1\nis_a:\n' >"$tmp/bad.obo"
expect 2 "$imp" --obo "$tmp/bad.obo" --gaf "$d/mini.gaf" --gmt "$d/mini.gmt" --out "$tmp/x"
grep -q "^vesk_import: $tmp/bad.obo:3: expected a term id after is_a:$" "$tmp/e" || fail "malformed message: $(cat "$tmp/e")"
expect 2 "$imp" --obo "$tmp/none.obo" --gaf "$d/mini.gaf" --gmt "$d/mini.gmt" --out "$tmp/x"
expect 3 "$imp" --obo "$d/mini.obo" --gaf "$d/mini.gaf" --gmt "$d/mini.gmt" --out /dev/null/x
echo "vesk_import command line: ok"
