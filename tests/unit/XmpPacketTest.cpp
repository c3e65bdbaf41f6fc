// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/media/XmpPacket.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace {

using platform::media::XmpPacket;

std::string packetOf(std::string_view descriptions) {
    return std::string("<?xpacket begin='' id='W5M0MpCehiHzreSzNTczkc9d'?><x:xmpmeta "
                       "xmlns:x='adobe:ns:meta/'><rdf:RDF>")
        .append(descriptions)
        .append("</rdf:RDF></x:xmpmeta>  <?xpacket end='w'?>");
}

std::string textIn(std::string_view packet, std::string_view name) {
    return XmpPacket(packet).text(name).value_or("none");
}

std::string textOf(std::string_view descriptions, std::string_view name = "tiff:Make") {
    return textIn(packetOf(descriptions), name);
}

std::string described(std::string_view elements) {
    return std::string("<rdf:Description rdf:about=''>")
        .append(elements)
        .append("</rdf:Description>");
}

} // namespace

TEST(XmpPacket, HasPropertiesAsAttributes) {
    constexpr std::string_view both = "<rdf:Description tiff:Make=\"a>'b\"\n\ttiff:Model = 'c/'/>"
                                      "<rdf:Description exif:FNumber='28/10' ></rdf:Description>";
    EXPECT_EQ(textOf(both), "a>'b");
    EXPECT_EQ(textOf(both, "tiff:Model"), "c/");
    EXPECT_EQ(textOf(both, "exif:FNumber"), "28/10");
    EXPECT_EQ(textOf(both, "exif:ExposureTime"), "none");
}

TEST(XmpPacket, HasPropertiesAsElements) {
    const std::string two =
        described("<tiff:Make>One</tiff:Make>\n <tiff:Model >Two</tiff:Model >");
    EXPECT_EQ(textOf(two), "One");
    EXPECT_EQ(textOf(two, "tiff:Model"), "Two");
    EXPECT_EQ(textOf(described("<tiff:Make/><tiff:Model>Two</tiff:Model>")), "none");
    EXPECT_EQ(textOf(described("<tiff:Make></tiff:Make>")), "");
}

TEST(XmpPacket, HasTheFirstItemOfAList) {
    EXPECT_EQ(textOf(described("<exif:ISOSpeedRatings><rdf:Seq> <rdf:li>400</rdf:li> "
                               "<rdf:li>800</rdf:li></rdf:Seq></exif:ISOSpeedRatings>"),
                     "exif:ISOSpeedRatings"),
              "400");
    EXPECT_EQ(textOf(described("<dc:rights><rdf:Alt><rdf:li xml:lang='x-default'>Mine</rdf:li>"
                               "<rdf:li xml:lang='de'>Meins</rdf:li></rdf:Alt></dc:rights>"),
                     "dc:rights"),
              "Mine");
}

TEST(XmpPacket, HasTheFirstOfPropertiesOfTheSameName) {
    EXPECT_EQ(textOf("<rdf:Description tiff:Make='a'/><rdf:Description tiff:Make='b'/>"), "a");
    EXPECT_EQ(textOf("<rdf:Description tiff:Make='a' tiff:Make='b'/>"), "a");
}

TEST(XmpPacket, SaysNothingOfTheImagesThatTheImageWasMadeFrom) {
    EXPECT_EQ(textOf(described("<xmpMM:Pantry><rdf:Bag><rdf:li><rdf:Description tiff:Make='a'>"
                               "<tiff:Make>b</tiff:Make></rdf:Description></rdf:li></rdf:Bag>"
                               "</xmpMM:Pantry><tiff:Make>c</tiff:Make>")),
              "c");
}

TEST(XmpPacket, NeedsNoWrapping) {
    EXPECT_EQ(textIn("<rdf:RDF><rdf:Description tiff:Make='a'/></rdf:RDF>", "tiff:Make"), "a");
    EXPECT_EQ(textIn("<rdf:Description tiff:Make='a'/>", "tiff:Make"), "none");
}

TEST(XmpPacket, HasCharactersForReferences) {
    const auto text = [](std::string_view value) {
        return textOf(described(std::string("<tiff:Make>").append(value).append("</tiff:Make>")));
    };
    EXPECT_EQ(text("a &amp;&lt;&gt;&quot;&apos; b"), "a &<>\"' b");
    EXPECT_EQ(text("&#65;&#x42;&#xe9;&#x20AC;&#x1F600;"), "AB\u00E9\u20AC\U0001F600");
    EXPECT_EQ(text("&amp;amp;"), "&amp;");
    for (const char* const none : {"&", "&;", "&#;", "&#x;", "&#xD800;", "&#x110000;",
                                   "&#99999999;", "&#-1;", "&other;", "&amp", "a & b; c"}) {
        EXPECT_EQ(text(none), none);
    }
}

TEST(XmpPacket, PassesOverCommentsAndInstructions) {
    EXPECT_EQ(textOf("<!-- <rdf:Description tiff:Make='a'/> --><?x y='>'?>"
                     "<rdf:Description tiff:Make='b'/>"),
              "b");
}

TEST(XmpPacket, EndsAtDeclarations) {
    EXPECT_EQ(textIn("<!DOCTYPE x [<!ENTITY a 'b'>]>" + packetOf(described("<tiff:Make>a"
                                                                           "</tiff:Make>")),
                     "tiff:Make"),
              "none");
    EXPECT_EQ(textOf(described("<tiff:Make><![CDATA[a]]></tiff:Make>")), "none");
}

TEST(XmpPacket, KnowsWhichNamespacesItHas) {
    const std::string text = packetOf("<rdf:Description exif:Flash='1' crs:Version='2'/>");
    const XmpPacket packet(text);
    EXPECT_TRUE(packet.hasNamespace("exif"));
    EXPECT_FALSE(packet.hasNamespace("tiff"));
    EXPECT_FALSE(packet.hasNamespace("exifEX"));
    EXPECT_FALSE(packet.hasNamespace("crs")); // of which nothing is asked
}

TEST(XmpPacket, SaysNothingWrongWhereItIsCutOff) {
    const std::string whole = packetOf("<rdf:Description tiff:Model='m'><tiff:Make>make</tiff:Make>"
                                       "</rdf:Description>");
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const XmpPacket packet(std::string_view(whole).substr(0, size));
        EXPECT_EQ(packet.text("tiff:Model").value_or("m"), "m") << size;
        EXPECT_EQ(packet.text("tiff:Make").value_or("make"), "make") << size;
    }
    EXPECT_EQ(textIn(whole, "tiff:Make"), "make");
}

TEST(XmpPacket, HasNoAttributesWithoutValues) {
    EXPECT_EQ(textIn(packetOf("<rdf:Description tiff:Make tiff:Model/>"), "tiff:Make"), "none");
    EXPECT_EQ(textIn(packetOf("<rdf:Description tiff:Model='m' tiff:Make=/>"), "tiff:Model"), "m");
}

TEST(XmpPacket, MayBeNestedAsDeepAsItLikes) {
    constexpr std::size_t depth = 1U << 20U;
    std::string deep = "<x><rdf:RDF>";
    for (std::size_t i = 0; i < depth; ++i) {
        deep.append("<a>");
    }
    EXPECT_EQ(textIn(deep, "tiff:Make"), "none");
}

TEST(XmpPacket, HasNoMoreThanSomeProperties) {
    std::string many = "<rdf:Description";
    for (int i = 0; i < 1000; ++i) {
        many.append(" tiff:a").append(std::to_string(i)).append("='1'");
    }
    many.append("/>").append(described("<tiff:Make>a</tiff:Make>"));
    EXPECT_EQ(textOf(many, "tiff:a0"), "1");
    EXPECT_EQ(textOf(many), "none");
}
