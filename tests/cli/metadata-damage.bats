#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# Ten thousand damaged pictures: an application is told what can be read of them, and of sound ones
# in between exactly what is in them.

load helpers

@test "damaged pictures harm neither the application nor the answers for others" {
    # With sanitizers each takes several times as long.
    local count=10000
    [ -z "${SANITIZERS:-}" ] || count=1500
    timeout 150 python3 "$BATS_TEST_DIRNAME/damage_pictures.py" "$SHOW_METADATA" "$MEDIA_WORKER" \
        "$SAMPLES" "$count" 1 >"$seen/out"
    sed 's/^/# /' "$seen/out" >&3
}
