// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Marks what the shared library offers to applications: the classes and functions of the installed
/// headers. Everything else is hidden in it, so that it may change, and calls of it cost no
/// look-up.
#define QM_EXPORT [[gnu::visibility("default")]]

/// Marks a member of such a class that the library keeps to itself.
#define QM_HIDDEN [[gnu::visibility("hidden")]]
