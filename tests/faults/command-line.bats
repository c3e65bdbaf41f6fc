#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# Calls of the system fail under the commands that look at files and change their tags.

load faults

@test "whatever fails, the answer is right or an error, and tags are as before or as wanted" {
    printf probe >probe
    set_attribute -n user.probe -v x probe
    inject command_line
}
