#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# Installs the packages for the tests, then builds and runs all of them: test.sh [PRESET]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
. tools/packages.sh
preset=${1:-default}

ensure_packages "${BUILD_PACKAGES[@]}" "${DESKTOP_PACKAGES[@]}" "${PACKAGE_PACKAGES[@]}" "${TEST_PACKAGES[@]}"

cmake --preset "$preset" -DVELMORA_TESTS=ON -DVELMORA_BENCHMARKS=ON
cmake --build --preset "$preset"

# What failed, and how, stands somewhere in the middle of a long output, so it is repeated at the end; as the last line,
# because ctest ends with a list of failures or of labels, its verdict.
log=build/$preset/ctest.log
status=0
# More tests than there are processors: the whole-program tests mostly wait, for a panel or for a minute to pass.
ctest --preset "$preset" --parallel "$((2 * $(nproc) + 2))" --no-tests=error 2>&1 | tee "$log" || status=$?
if [ "$status" -ne 0 ]; then
    said='^(FAIL|ERROR): |^[A-Za-z.]*(Error|Exception): |: Failure$|^\[  FAILED  \]'
    awk -v said="$said" '$0 ~ said' "$log" | tail -n 40 # none of them after a timeout, which is no error here
fi
grep 'tests passed' "$log"
exit "$status"
