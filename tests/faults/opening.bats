#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# Calls of the system fail under qm open.

load faults
load ../cli/application

setup() {
    pin_environment
    make_box
    start_bus
    start_application
}

teardown() {
    stop_all
}

@test "whatever fails, the application gets the script, or the user an error" {
    RECORD=$record inject opening
}
