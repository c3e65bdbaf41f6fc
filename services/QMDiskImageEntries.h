// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "services/QMMetadataService.h"

/// Appends to `into` the entries of disk images that are among `enabledKeys`, out of what the
/// disk-image tool says of an image; its values may be of any kind and size. Any thread.
void qm_appendDiskImageEntries(const platform::PropertyList::Dictionary& info,
                               const QMMetadataService::Keys& enabledKeys, QMMetadataEntries& into);
