#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>
#include <QStringList>

// The metadata and cover of one demo movie. Covers are drawn from shapes and
// colours alone, so they need no fonts and look alike on every machine.
class DemoArtwork {
public:
    struct Metadata {
        QString identifier;
        QString title;
        QString description;
        QString genre;
        QStringList cast;
        QStringList directors;
        QStringList producers;
        int duration = 0; // seconds
    };

    DemoArtwork() = delete;

    // A 300 x 450 poster; `index` picks the hue and the pattern.
    static QImage cover(int index);
    static QByteArray coverPng(int index);
    static QByteArray metadataXml(const Metadata& metadata);
};
