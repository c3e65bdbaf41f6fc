# SPDX-License-Identifier: Apache-2.0
# Shared by the .bats files of this folder. FAULT_LIBRARY makes calls of the system fail, FAULTS is
# how many of each at most in one command line; see inject.py.

load ../cli/helpers

: "${FAULT_LIBRARY:?must name the library that makes calls fail}"
FAULT_LIBRARY=$(realpath "$FAULT_LIBRARY")

# inject CASES [COMMAND...]: fails and tells all that went wrong. COMMAND runs the whole.
inject() {
    "${@:2}" python3 -B "$BATS_TEST_DIRNAME/inject.py" "$FAULT_LIBRARY" "$BATS_TEST_DIRNAME/$1.py" \
        >"$seen/out" 3>&-
    sed 's/^/# /' "$seen/out" >&3
}
