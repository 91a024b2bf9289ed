#!/usr/bin/env bash
# How long the desktop program takes to end once its main window is closed (the close
# box, as a window manager sends it), on a virtual screen (Xvfb), against the simulated
# KDX, built in or (with KDXCTL) served by kdxctl on a pseudo-terminal, so that the
# Qt serial port is closed at the end as with a real adapter.
#   bench/exit_time.sh KDXTOOL [RUNS] [KDXCTL]
# Prints each run's time from the close request to the process's end, and the worst.
set -euo pipefail
tool=$1 runs=${2:-5} kdxctl=${3:-}
here=$(cd "$(dirname "$0")" && pwd)
command -v xvfb-run >/dev/null || { echo "exit: xvfb-run not installed (apt-get install xvfb xauth), skipped"; exit 0; }
helper=$(mktemp -d)/close_window
cc -O1 -o "$helper" "$here/close_window.c" -lX11 2>/dev/null || { echo "exit: libX11 headers missing (apt-get install libx11-dev), skipped"; exit 0; }
xvfb-run -a -s "-screen 0 1600x1000x24" bash -c '
  tool=$1 runs=$2 helper=$3 kdxctl=$4 worst=0
  for i in $(seq "$runs"); do
    if [ -n "$kdxctl" ]; then
      out=$(mktemp)
      "$kdxctl" sim --pty >"$out" 2>&1 & sim=$!
      sleep 1
      line=$(grep -o "/dev/pts/[0-9]*" "$out" | head -1)
      "$tool" --port "$line" >/dev/null 2>&1 & pid=$!
    else
      sim=""
      "$tool" --simulate >/dev/null 2>&1 & pid=$!
    fi
    sleep 4 # the windows come up and the telemetry flows
    t0=$("$helper" "KDX Tool") || { kill $pid; exit 1; }
    wait $pid || true
    t1=$(date +%s.%N)
    [ -n "$sim" ] && { kill $sim; wait $sim 2>/dev/null || true; }
    ms=$(awk -v a="$t0" -v b="$t1" "BEGIN { printf \"%.0f\", (b - a) * 1000 }")
    echo "exit: run $i: ${ms} ms from the close to the end of the process"
    [ "$ms" -gt "$worst" ] && worst=$ms
  done
  echo "exit: worst of $runs runs: ${worst} ms"
' _ "$tool" "$runs" "$helper" "$kdxctl"
