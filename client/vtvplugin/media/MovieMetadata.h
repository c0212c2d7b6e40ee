#pragma once

#include <QString>
#include <QStringList>
#include <QtGlobal>

// What a movie's metadata file says about it. Empty texts and lists, and 0, for
// everything the file does not give.
struct MovieMetadata {
    QString title;
    QString description; // raw, as the file has it
    QStringList cast;
    QStringList directors;
    QStringList producers;
    qint32 duration = 0; // seconds
    qint32 cVersion = 0;
    QString xmlVersion;
    QString vireoContentId;
    QString clientContentId;
};
