// SPDX-License-Identifier: Apache-2.0
#pragma once

/// The one place that includes ICU.

#include <unicode/brkiter.h>
#include <unicode/coll.h>
#include <unicode/dcfmtsym.h>
#include <unicode/locid.h>
#include <unicode/smpdtfmt.h>
#include <unicode/stringpiece.h>
#include <unicode/timezone.h>
#include <unicode/ubrk.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utf8.h>
