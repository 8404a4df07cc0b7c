#!/bin/sh
# Looks for mistakes in this application, then runs it on a virtual device until it has done what it
# should. MORVIK_DEV names morvik-dev where that is not in the PATH, TEST_SECONDS how long to wait.
cd "$(dirname "$0")" || exit 2
dev=${MORVIK_DEV:-morvik-dev}
seconds=${TEST_SECONDS:-10}
expected='@SAYS@'

"$dev" check "$PWD" || exit 1

place=$(mktemp -d) || exit 2
mkfifo "$place/log" || exit 2
"$dev" run --no-page --seconds="$seconds" "$PWD" </dev/null >"$place/log" 2>&1 &
running=$!
trap 'kill "$running" 2>/dev/null; wait "$running"; rm -r "$place"' EXIT

if grep -q "$expected" "$place/log"; then
  echo "passed: $expected"
else
  echo "failed: nothing said \"$expected\" within $seconds seconds" >&2
  exit 1
fi
