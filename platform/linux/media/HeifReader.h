// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace platform::media {

/// Lets libheif set up its decoders, which it would otherwise do on first use.
void prepareHeif();

} // namespace platform::media
