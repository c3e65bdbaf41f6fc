// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Format.h"
#include "platform/ImageSource.h"

#include <optional>
#include <sstream>
#include <string>
#include <string_view>

/// Puts image properties into one line: "12x8 8 RGB profile=sRGB dpi=72x72 alpha=yes count=1", then
/// what the blocks say, each with its name.
class ImageDescription {
public:
    [[nodiscard]] static std::string
    of(const std::optional<platform::ImageProperties>& properties) {
        return properties ? ImageDescription(*properties).m_text : "no image";
    }

private:
    explicit ImageDescription(const platform::ImageProperties& properties) {
        m_text = platform::format("{}x{}", properties.pixelWidth.value_or(-1),
                                  properties.pixelHeight.value_or(-1));
        m_text.append(" ").append(std::to_string(properties.depth.value_or(-1)));
        m_text.append(" ").append(properties.colorModel.value_or("no-model"));
        add("profile", properties.profileName);
        if (properties.dpiWidth && properties.dpiHeight) {
            add("dpi",
                std::optional(textOf(*properties.dpiWidth) + "x" + textOf(*properties.dpiHeight)));
        }
        if (properties.hasAlpha) {
            add("alpha", std::optional<std::string>(*properties.hasAlpha ? "yes" : "no"));
        }
        add("count", properties.imageCount);
        addTiff(properties.tiff);
        addExif(properties.exif);
        addGps(properties.gps);
        if (properties.iptc) {
            m_text.append(" iptc");
            add("notice", properties.iptc->copyrightNotice);
        }
    }

    void addTiff(const std::optional<platform::ImageProperties::Tiff>& tiff) {
        if (tiff) {
            m_text.append(" tiff");
            add("make", tiff->make);
            add("model", tiff->model);
            add("software", tiff->software);
            add("copyright", tiff->copyright);
        }
    }
    void addExif(const std::optional<platform::ImageProperties::Exif>& exif) {
        if (exif) {
            m_text.append(" exif");
            add("lens", exif->lensModel);
            add("time", exif->exposureTime);
            add("f", exif->fNumber);
            for (const auto speed : exif->isoSpeedRatings) {
                add("iso", std::optional(speed));
            }
            add("length", exif->focalLength);
            add("length35", exif->focalLenIn35mmFilm);
            add("date", exif->dateTimeOriginal);
        }
    }
    void addGps(const std::optional<platform::ImageProperties::Gps>& gps) {
        if (gps) {
            m_text.append(" gps");
            add("latitude", gps->latitude);
            add("ref", gps->latitudeRef);
            add("longitude", gps->longitude);
            add("ref", gps->longitudeRef);
        }
    }

    // As streams write numbers: to six digits.
    static std::string textOf(double value) {
        std::ostringstream stream;
        stream << value;
        return stream.str();
    }

    void add(std::string_view name, const std::optional<double>& value) {
        if (value) {
            add(name, std::optional(textOf(*value)));
        }
    }
    template <class Integer>
    void add(std::string_view name, const std::optional<Integer>& value) {
        if (value) {
            add(name, std::optional(std::to_string(*value)));
        }
    }
    void add(std::string_view name, const std::optional<std::string>& value) {
        if (value) {
            m_text.append(" ").append(name).append("=").append(*value);
        }
    }

    std::string m_text;
};
