#include "vtvplugin/store/LibraryFormat.h"

#include <algorithm>

bool LibraryFormat::isValidPairID(const QString& pairID)
{
    return pairID.length() == kPairIDLength && staysInFolder(pairID)
        && !pairID.contains(QChar(u'\0'));
}

bool LibraryFormat::isWellFormedPairID(const QString& pairID)
{
    const auto letterOrDigit = [](QChar c) { return c.unicode() < 128 && c.isLetterOrNumber(); };
    return pairID.length() == kPairIDLength
        && std::all_of(pairID.cbegin(), pairID.cend(), letterOrDigit);
}

const QStringList& LibraryFormat::movieExtensions()
{
    static const QStringList extensions { QStringLiteral("m4v"), QStringLiteral("3gp"),
        QStringLiteral("m3u"), QStringLiteral("pls"), QStringLiteral("divx"),
        QStringLiteral("xvid"), QStringLiteral("avi"), QStringLiteral("mov"), QStringLiteral("wmv"),
        QStringLiteral("asx"), QStringLiteral("asf"), QStringLiteral("ogm"), QStringLiteral("mpg"),
        QStringLiteral("mpeg"), QStringLiteral("mp4"), QStringLiteral("mkv"), QStringLiteral("avc"),
        QStringLiteral("flv"), QStringLiteral("dv"), QStringLiteral("fli"), QStringLiteral("m2v"),
        QStringLiteral("ts") };
    return extensions;
}

bool LibraryFormat::isMovieExtension(QStringView extension)
{
    return movieExtensions().contains(extension, Qt::CaseSensitive);
}

bool LibraryFormat::isMovieFileName(const QString& name)
{
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot > 0 && isMovieExtension(QStringView(name).mid(dot + 1));
}

QString LibraryFormat::metadataPathFor(const QString& moviePath)
{
    return withExtension(moviePath, kMetadataExtension);
}

QString LibraryFormat::coverPathFor(const QString& moviePath)
{
    return withExtension(moviePath, kCoverExtension);
}

QString LibraryFormat::withExtension(const QString& path, QLatin1String extension)
{
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    const qsizetype dot = path.lastIndexOf(QLatin1Char('.'));
    const QString stem = dot > slash + 1 ? path.left(dot) : path;
    return stem + QLatin1Char('.') + extension;
}

bool LibraryFormat::isReservedIdentifier(const QString& identifier)
{
    const auto baseName
        = [](QLatin1String file) { return file.left(file.indexOf(QLatin1Char('.'))); };
    return identifier == baseName(kConfigFile) || identifier == baseName(kStatsFile);
}

bool LibraryFormat::staysInFolder(const QString& name)
{
    return !name.contains(QLatin1Char('/')) && name != QLatin1String(".")
        && name != QLatin1String("..");
}
