#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# Dates are local: the zone is that of TZ in each of its forms.

load helpers

# The modification date of a file touched at $1, in the zone $2, is $3.
reads() {
    touch -d "$1" f
    TZ=$2 qm info -s f
    printf 'Zero KB  %s  f\n' "$3" >"$seen/expected"
    stdout_is <"$seen/expected"
    TZ=$2 qm info f
    line_is Modified "$3"
    TZ=$2 qm info --json f
    json_holds 'document["modified"] == wanted[0]' "$3"
    succeeds
}

@test "a zone without daylight saving" {
    reads '2024-01-15 12:34:56 UTC' Asia/Tokyo '2024-01-15 21:34:56'
    reads '2024-07-15 22:34:56 UTC' Asia/Tokyo '2024-07-16 07:34:56'
}

@test "a zone with daylight saving" {
    reads '2024-01-15 12:00:00 UTC' America/New_York '2024-01-15 07:00:00'
    reads '2024-07-15 12:00:00 UTC' America/New_York '2024-07-15 08:00:00'
}

@test "the hours around a change of the clocks" {
    reads '2024-03-10 06:59:59 UTC' America/New_York '2024-03-10 01:59:59'
    reads '2024-03-10 07:00:00 UTC' America/New_York '2024-03-10 03:00:00'
    reads '2024-11-03 05:30:00 UTC' America/New_York '2024-11-03 01:30:00'
    reads '2024-11-03 06:30:00 UTC' America/New_York '2024-11-03 01:30:00'
}

@test "zones that are off by parts of an hour" {
    reads '2024-01-15 12:00:00 UTC' Asia/Kathmandu '2024-01-15 17:45:00'
    reads '2024-01-15 12:00:00 UTC' Australia/Lord_Howe '2024-01-15 23:00:00'
    reads '2024-07-15 12:00:00 UTC' Australia/Lord_Howe '2024-07-15 22:30:00'
}

@test "POSIX descriptions of a zone" {
    reads '2024-01-15 12:00:00 UTC' JST-9 '2024-01-15 21:00:00'
    reads '2024-07-15 12:00:00 UTC' EST5EDT,M3.2.0,M11.1.0 '2024-07-15 08:00:00'
    reads '2024-01-15 12:00:00 UTC' EST5EDT,M3.2.0,M11.1.0 '2024-01-15 07:00:00'
    reads '2024-01-15 12:00:00 UTC' '<+0530>-5:30' '2024-01-15 17:30:00'
    reads '2024-01-15 12:00:00 UTC' UTC0 '2024-01-15 12:00:00'
}

@test "a colon before the name of a zone" {
    reads '2024-01-15 12:34:56 UTC' :Asia/Tokyo '2024-01-15 21:34:56'
}

@test "an empty or unknown zone is UTC" {
    reads '2024-01-15 12:34:56 UTC' '' '2024-01-15 12:34:56'
    reads '2024-01-15 12:34:56 UTC' Nowhere/Nothing '2024-01-15 12:34:56'
}

@test "dates before 1970" {
    reads '1969-12-31 23:59:59 UTC' UTC '1969-12-31 23:59:59'
    reads '1969-12-31 23:59:59.5 UTC' UTC '1969-12-31 23:59:59'
    reads '1960-02-29 01:02:03 UTC' UTC '1960-02-29 01:02:03'
    reads '1960-02-29 23:02:03 UTC' Asia/Tokyo '1960-03-01 08:02:03'
}

@test "the first second of all" {
    reads '1970-01-01 00:00:00 UTC' UTC '1970-01-01 00:00:00'
    reads '1970-01-01 00:00:00 UTC' America/New_York '1969-12-31 19:00:00'
}

@test "dates after 2038" {
    reads '2038-01-19 03:14:08 UTC' UTC '2038-01-19 03:14:08'
    reads '2040-02-29 12:00:00 UTC' Asia/Tokyo '2040-02-29 21:00:00'
    reads '2106-02-07 06:28:16 UTC' UTC '2106-02-07 06:28:16'
    # The rules of a zone go on beyond the years that its data spell out.
    reads '2100-07-15 12:00:00 UTC' America/New_York '2100-07-15 08:00:00'
}

@test "fractions of a second are cut off" {
    reads '2024-01-15 12:34:56.999999999 UTC' UTC '2024-01-15 12:34:56'
}

@test "midnight is hour zero" {
    reads '2024-01-15 00:00:00 UTC' UTC '2024-01-15 00:00:00'
    reads '2024-01-15 12:00:00 UTC' UTC '2024-01-15 12:00:00'
}

@test "the last days of a year belong to that year" {
    # 2024-12-30 is in the first week of 2025.
    reads '2024-12-30 12:00:00 UTC' UTC '2024-12-30 12:00:00'
    reads '2021-01-01 12:00:00 UTC' UTC '2021-01-01 12:00:00'
}

@test "the creation date is in the zone too" {
    touch f
    [ "$(stat -c %w f)" != - ] || skip "no birth times here"
    for zone in UTC Asia/Tokyo America/New_York '<+0530>-5:30'; do
        TZ=$zone qm info f
        line_is Created "$(TZ=$zone creation_date f)"
        TZ=$zone qm info --json f
        json_holds 'document["created"] == wanted[0]' "$(TZ=$zone creation_date f)"
    done
}

@test "the creation date is not the date of the last change" {
    touch f
    [ "$(stat -c %w f)" != - ] || skip "no birth times here"
    touch -d '2001-02-03 04:05:06 UTC' f
    qm info f
    line_is Modified '2001-02-03 04:05:06'
    line_is Created "$(creation_date f)"
    [ "$(line_of Created)" != '2001-02-03 04:05:06' ]
}
