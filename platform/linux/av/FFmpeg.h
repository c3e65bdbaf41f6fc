// SPDX-License-Identifier: Apache-2.0
#pragma once

/// The one place that FFmpeg's headers come from; they are plain C.
extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/avstring.h>
#include <libavutil/avutil.h>
#include <libavutil/display.h>
#include <libavutil/log.h>
#include <libavutil/opt.h>
}
