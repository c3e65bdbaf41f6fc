# SPDX-License-Identifier: Apache-2.0
# Shared by the .bats files about metadata. SHOW_METADATA names an application that shows it.

SHOW_METADATA=$(realpath "${SHOW_METADATA:?must name the program that shows metadata}")

show() {
    capture "$SHOW_METADATA" "$@"
}

# values_are KEY=VALUE,...: the entries of the first file, in their order.
values_are() {
    json_holds '",".join(e["key"] + "=" + e["value"] for e in document[0]["entries"]) == wanted[0]' \
        "$1"
}
