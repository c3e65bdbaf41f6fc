// SPDX-License-Identifier: Apache-2.0
// Usage: kde_text FILE...
// Reads the properties of text files as KDE's indexer does. Not part of the product.
#include <QCoreApplication>
#include <cstdio>

#include <KFileMetaData/Extractor>
#include <KFileMetaData/ExtractorCollection>
#include <KFileMetaData/SimpleExtractionResult>

int main(int argc, char* argv[]) {
    const QCoreApplication application(argc, argv);
    const KFileMetaData::ExtractorCollection collection;
    const QString type = QStringLiteral("text/plain");
    const auto extractors = collection.fetchExtractors(type);
    for (int i = 1; i < argc; ++i) {
        // Lines are counted only where the text is wanted, too.
        KFileMetaData::SimpleExtractionResult result(
            QString::fromLocal8Bit(argv[i]), type,
            KFileMetaData::ExtractionResult::ExtractMetaData |
                KFileMetaData::ExtractionResult::ExtractPlainText);
        for (KFileMetaData::Extractor* const extractor : extractors) {
            extractor->extract(&result);
        }
        const auto lines = result.properties(KFileMetaData::PropertiesMapType::MultiMap)
                               .value(KFileMetaData::Property::LineCount);
        std::printf("%d\n", lines.toInt());
    }
    return extractors.isEmpty() ? 1 : 0;
}
