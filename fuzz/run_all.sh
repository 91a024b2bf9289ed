#!/usr/bin/env bash
# Runs every fuzz target for SECONDS each, one after the other, over its corpus in
# fuzz/corpus/<target>/. New inputs and any crash go to a temporary folder, never into
# the repository; with KDX_FUZZ_MERGE=1 the new inputs that add coverage are merged into
# the corpus afterwards. Prints executions, executions per second and coverage per
# target; exits 1 when a target failed (its reproducer is kept and named).
#
# Every target runs with the seed KDX_FUZZ_SEED (1 when unset), printed, so a failure
# reproduces: run the same command with the same seed.
#
#   fuzz/run_all.sh DIR_WITH_TARGETS SECONDS [TARGET...]
set -uo pipefail
usage="usage: fuzz/run_all.sh DIR_WITH_TARGETS SECONDS [TARGET...]   (SECONDS a whole number above 0)"
[ $# -ge 2 ] || { echo "$usage" >&2; exit 2; }
BIN=$(cd "$1" && pwd)
SECONDS_EACH=$2
# libFuzzer takes a time limit of 0 as none: such a run would never end.
case $SECONDS_EACH in
  ''|*[!0-9]*|0) echo "$usage" >&2; exit 2 ;;
esac
SEED=${KDX_FUZZ_SEED:-1}
case $SEED in
  ''|*[!0-9]*|0) echo "fuzz: KDX_FUZZ_SEED is a whole number above 0" >&2; exit 2 ;;
esac
shift 2
HERE=$(cd "$(dirname "$0")" && pwd)
ALL_TARGETS=(receiver config tuning decode inbound entry cli_args log_name playback)
TARGETS=("$@")
[ ${#TARGETS[@]} -gt 0 ] || TARGETS=("${ALL_TARGETS[@]}")

WORK=$(mktemp -d "${TMPDIR:-/tmp}/kdx-fuzz.XXXXXX")
failed=0
echo "fuzz: seed $SEED, $SECONDS_EACH s per target (again: KDX_FUZZ_SEED=$SEED fuzz/run_all.sh $BIN $SECONDS_EACH TARGET)"
printf '%-9s %10s %8s %13s %13s  %s\n' target execs exec/s cov ft result
for t in "${TARGETS[@]}"; do
  exe="$BIN/${t}_fuzz"
  [ -x "$exe" ] || { echo "fuzz: $exe is missing" >&2; failed=1; continue; }
  mkdir -p "$WORK/$t" "$HERE/corpus/$t"
  opts=(-max_total_time="$SECONDS_EACH" -timeout=10 -print_final_stats=1 -seed="$SEED" -artifact_prefix="$WORK/$t-")
  case $t in
    decode) opts+=(-max_len=8192) ;;
    *) opts+=(-max_len=4096) ;;
  esac
  [ -f "$HERE/$t.dict" ] && opts+=(-dict="$HERE/$t.dict")
  # Run from the work folder: libFuzzer writes nothing into the current one then.
  (cd "$WORK" && TMPDIR="$WORK" "$exe" "${opts[@]}" "$WORK/$t" "$HERE/corpus/$t" >"$WORK/$t.log" 2>&1)
  rc=$?
  execs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$WORK/$t.log" | tail -1)
  rate=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$WORK/$t.log" | tail -1)
  # Coverage once the corpus is loaded, and at the end: what this run added.
  start=$(grep -m1 'INITED' "$WORK/$t.log")
  cov0=$(grep -o 'cov: [0-9]*' <<<"$start" | cut -d' ' -f2)
  ft0=$(grep -o 'ft: [0-9]*' <<<"$start" | cut -d' ' -f2)
  cov=$(grep -o 'cov: [0-9]*' "$WORK/$t.log" | tail -1 | cut -d' ' -f2)
  ft=$(grep -o 'ft: [0-9]*' "$WORK/$t.log" | tail -1 | cut -d' ' -f2)
  if [ $rc -eq 0 ]; then
    result=clean
  else
    result="FAILED (exit $rc)"
    failed=1
  fi
  printf '%-9s %10s %8s %13s %13s  %s\n' "$t" "${execs:-?}" "${rate:-?}" "${cov0:-?}->${cov:-?}" \
    "${ft0:-?}->${ft:-?}" "$result"
  if [ $rc -ne 0 ]; then
    grep -m1 -B2 -A30 -E '^==[0-9]+==ERROR|runtime error|_fuzz: |deadly signal|timeout after' "$WORK/$t.log" | head -60 >&2
    for a in "$WORK/$t"-*; do [ -e "$a" ] && echo "fuzz: $t reproducer: $a (run: $exe $a)" >&2; done
  elif [ "${KDX_FUZZ_MERGE:-0}" = 1 ]; then
    # The hand-made seeds stay as they are; every input found (before, or in this run)
    # that reaches code the seeds do not is kept, the smallest first. Coverage here is
    # edges only, so the corpus stays small.
    kept="$WORK/$t.kept"
    mkdir -p "$kept" "$WORK/$t.found"
    find "$HERE/corpus/$t" -maxdepth 1 -type f -regextype posix-extended -regex '.*/[0-9a-f]{40}' \
      -exec mv {} "$WORK/$t.found/" \;
    cp "$HERE/corpus/$t"/* "$kept/" 2>/dev/null
    if (cd "$WORK" && "$exe" -merge=1 -use_counters=0 "${opts[@]:3}" "$kept" "$WORK/$t.found" "$WORK/$t" \
          >>"$WORK/$t.log" 2>&1); then
      cp -n "$kept"/* "$HERE/corpus/$t/"
    else
      mv "$WORK/$t.found"/* "$HERE/corpus/$t/" 2>/dev/null
      echo "fuzz: merging $t's new inputs failed (see $WORK/$t.log)" >&2
    fi
  fi
done
if [ $failed -eq 0 ]; then
  rm -rf "$WORK"
else
  echo "fuzz: logs and reproducers kept in $WORK" >&2
fi
exit $failed
