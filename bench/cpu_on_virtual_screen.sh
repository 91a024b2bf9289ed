#!/usr/bin/env bash
# CPU use of the desktop program against the simulated module on a virtual screen (Xvfb),
# with its windows up and the Tuning Display recording its repeating 10 s sweep.
#   bench/cpu_on_virtual_screen.sh KDXTOOL [SECONDS]
# Waits 5 s for the windows to come up, then reads the process's user + system CPU time
# from /proc over SECONDS (default 60) and prints it as a share of one core.
set -euo pipefail
tool=$1 secs=${2:-60}
command -v xvfb-run >/dev/null || { echo "cpu: xvfb-run not installed (apt-get install xvfb xauth), skipped"; exit 0; }
xvfb-run -a -s "-screen 0 1600x1000x24" bash -c '
  tool=$1 secs=$2
  "$tool" --simulate >/dev/null 2>&1 & pid=$!
  sleep 5
  ticks() { awk "{print \$14 + \$15}" /proc/$pid/stat; }
  hz=$(getconf CLK_TCK)
  t0=$(ticks); w0=$(date +%s.%N)
  sleep "$secs"
  t1=$(ticks); w1=$(date +%s.%N)
  kill $pid; wait $pid 2>/dev/null || true
  awk -v t="$((t1 - t0))" -v hz="$hz" -v w0="$w0" -v w1="$w1" \
    "BEGIN { s = t / hz; printf \"cpu: kdxtool --simulate on Xvfb, tuning sweep 10 s repeating: %.2f s CPU in %.1f s = %.1f %% of one core\n\", s, w1 - w0, 100 * s / (w1 - w0) }"
' _ "$tool" "$secs"
