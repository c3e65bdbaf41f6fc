// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/pdf/Predictor.h"

namespace platform::pdf {

bool undoPredictor(std::string& bytes, std::size_t rowSize) {
    constexpr char none = 0;
    constexpr char up = 2;
    const std::size_t rows = rowSize > 0 ? bytes.size() / (rowSize + 1) : 0;
    const std::string above(rowSize, '\0');
    const char* previous = above.data();
    for (std::size_t row = 0; row < rows; ++row) {
        const char* const source = bytes.data() + row * (rowSize + 1);
        char* const target = bytes.data() + row * rowSize; // never behind its source
        const char predictor = *source;
        if (predictor != none && predictor != up) {
            return false;
        }
        for (std::size_t i = 0; i < rowSize; ++i) {
            const auto base = static_cast<unsigned char>(predictor == up ? previous[i] : 0);
            target[i] = static_cast<char>(static_cast<unsigned char>(source[i + 1]) + base);
        }
        previous = target;
    }
    bytes.resize(rows * rowSize);
    return rows > 0;
}

} // namespace platform::pdf
