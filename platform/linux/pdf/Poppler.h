// SPDX-License-Identifier: Apache-2.0
#pragma once

/// The one place that includes poppler. Its headers promise nothing between releases: what is used
/// of them has to be looked at with each new one.

#include <poppler/Catalog.h>
#include <poppler/ErrorCodes.h>
#include <poppler/Gfx.h>
#include <poppler/GfxFont.h>
#include <poppler/GfxState.h>
#include <poppler/GlobalParams.h>
#include <poppler/Object.h>
#include <poppler/OutputDev.h>
#include <poppler/PDFDoc.h>
#include <poppler/Page.h>
#include <poppler/Stream.h>
#include <poppler/XRef.h>
