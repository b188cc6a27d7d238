#!/usr/bin/env bash
# Starts the real program on the display, finds its window, opens the File menu, takes a
# screenshot that must not be blank, and leaves through "Exit" on the bar: status 0.
set -u
program=$1
shot=${2:-celvane_smoke.png}
"$program" &
pid=$!
trap 'kill $pid 2>/dev/null' EXIT
id=""
for _ in $(seq 1 50); do
  id=$(xdotool search --name '^Celvane$' 2>/dev/null | head -n 1)
  [ -n "$id" ] && break
  sleep 0.1
done
[ -n "$id" ] || { echo "no window titled Celvane"; exit 1; }
eval "$(xdotool getwindowgeometry --shell "$id")"
# 600 by 600 drawing area under a menu bar of 25 pixels.
if [ "$WIDTH" != 600 ] || [ "$HEIGHT" != 625 ]; then echo "window is ${WIDTH}x${HEIGHT}"; exit 1; fi
sleep 0.3
xdotool mousemove $((X + 70)) $((Y + 12)) click 1   # "File"
sleep 0.5
import -window root "$shot"
colours=$(convert "$shot" -format '%k' info:)
if [ "$colours" -lt 4 ]; then echo "screenshot looks blank ($colours colours)"; exit 1; fi
xdotool key Escape
sleep 0.3
xdotool mousemove $((X + 200)) $((Y + 12)) click 1  # "Exit"
for _ in $(seq 1 50); do
  if ! kill -0 $pid 2>/dev/null; then break; fi
  sleep 0.1
done
if kill -0 $pid 2>/dev/null; then echo "program did not end after Exit"; exit 1; fi
wait $pid
status=$?
trap - EXIT
[ "$status" -eq 0 ] || { echo "exit status $status"; exit 1; }
echo "window ${WIDTH}x${HEIGHT}, $colours colours, exit status 0"
