// SPDX-License-Identifier: Apache-2.0
#include "platform/ByteCountFormatter.h"

#include "platform/linux/Locale.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace platform::ByteCountFormatter {
namespace {

struct Unit {
    std::string_view name;
    std::uint64_t size;
    unsigned fractionDigits;
};

constexpr std::array<Unit, 6> units{{
    {"KB", 1'000, 0},
    {"MB", 1'000'000, 1},
    {"GB", 1'000'000'000, 2},
    {"TB", 1'000'000'000'000, 2},
    {"PB", 1'000'000'000'000'000, 2},
    {"EB", 1'000'000'000'000'000'000, 2},
}};

// In hundredths of the unit, rounded half up to the unit's number of fraction digits.
std::uint64_t roundedHundredths(std::uint64_t magnitude, const Unit& unit) {
    constexpr std::array<std::uint64_t, 3> steps{100, 10, 1};
    const std::uint64_t step = steps[unit.fractionDigits];
    const std::uint64_t grain = unit.size / (100 / step);
    return (magnitude / grain + (magnitude % grain >= grain - grain / 2 ? 1 : 0)) * step;
}

std::string number(std::uint64_t hundredths, std::string_view separator) {
    std::string text = std::to_string(hundredths / 100);
    const std::uint64_t fraction = hundredths % 100;
    if (fraction != 0) {
        text.append(separator).append(std::to_string(fraction / 10));
        if (fraction % 10 != 0) {
            text.append(std::to_string(fraction % 10));
        }
    }
    return text;
}

std::string textOfMagnitude(std::uint64_t magnitude) {
    if (magnitude < 1000) {
        return std::to_string(magnitude) + (magnitude == 1 ? " byte" : " bytes");
    }
    std::size_t index = 0;
    std::uint64_t hundredths = roundedHundredths(magnitude, units[index]);
    while (hundredths >= 100'000 && index + 1 < units.size()) {
        ++index;
        hundredths = roundedHundredths(magnitude, units[index]);
    }
    return number(hundredths, decimalSeparator()) + " " + std::string(units[index].name);
}

} // namespace

std::string fileStyle(std::int64_t bytes) {
    if (bytes == 0) {
        return "Zero KB";
    }
    if (bytes > 0) {
        return textOfMagnitude(static_cast<std::uint64_t>(bytes));
    }
    return std::string(1, '-').append(textOfMagnitude(~static_cast<std::uint64_t>(bytes) + 1));
}

} // namespace platform::ByteCountFormatter
