// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/ImageSource.h"
#include "platform/linux/OpenedFile.h"

#include <optional>

/// One reader for each format. Each answers what the file says of its first image, or nullopt when
/// it is none of that format or not even its size can be told; the caller has seen the first bytes
/// that mark the format. Images are counted for `wantsImageCount`. No exception leaves them but
/// for want of memory. Any thread.
namespace platform::media {

using ImageFormatReader = std::optional<ImageProperties>(const OpenedFile& file,
                                                         bool wantsImageCount);

/// Windows and OS/2 bitmaps.
ImageFormatReader readBmp;
ImageFormatReader readGif;
/// HEIC, AVIF and their kin.
ImageFormatReader readHeif;
/// Windows icons and cursors.
ImageFormatReader readIco;
ImageFormatReader readJpeg;
/// PNG and APNG.
ImageFormatReader readPng;
/// Photoshop documents.
ImageFormatReader readPsd;
/// TIFF, and the raw photographs that have its form: CR2, NEF, ARW, DNG.
ImageFormatReader readTiff;
ImageFormatReader readWebP;
/// GIMP's documents.
ImageFormatReader readXcf;

} // namespace platform::media
