// SPDX-License-Identifier: Apache-2.0
// Usage: kde_tags FILE            prints the tags as KDE reads them, one a line
//        kde_tags FILE TAG...     stores them as KDE does
#include <QString>
#include <QStringList>
#include <cstdio>

#include <KFileMetaData/UserMetaData>

int main(int argc, char* argv[]) {
    if (argc < 2) {
        return 10;
    }
    KFileMetaData::UserMetaData data(QString::fromLocal8Bit(argv[1]));
    if (argc == 2) {
        const QStringList tags = data.tags();
        for (const QString& tag : tags) {
            std::puts(tag.toUtf8().constData());
        }
        return 0;
    }
    QStringList tags;
    for (int i = 2; i < argc; ++i) {
        tags.append(QString::fromUtf8(argv[i]));
    }
    return data.setTags(tags) == KFileMetaData::UserMetaData::NoError ? 0 : 1;
}
