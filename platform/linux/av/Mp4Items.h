// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/linux/av/AvItems.h"

namespace platform::av {

/// The items of an ISO base media or QuickTime file: those of the user data of the movie - texts of
/// QuickTime's and of 3GPP's kind, and the list that iTunes writes -, and of QuickTime's metadata,
/// which have keys. Libraries keep one of those that are there twice. What is damaged is left out.
/// Any thread.
[[nodiscard]] Items itemsOfMp4(const OpenedFile& file);

} // namespace platform::av
