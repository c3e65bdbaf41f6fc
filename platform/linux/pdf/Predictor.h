// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>

namespace platform::pdf {

/// Undoes the predictors of PNG (ISO 32000-2, 7.4.4.4) in place: rows of this many bytes behind one
/// that names the predictor, for one component of eight bits. False when a row has one that no
/// writer uses for tables of objects, which are all but "None" and "Up", or when there are no rows.
/// An incomplete last row is dropped. Any thread.
[[nodiscard]] bool undoPredictor(std::string& bytes, std::size_t rowSize);

} // namespace platform::pdf
