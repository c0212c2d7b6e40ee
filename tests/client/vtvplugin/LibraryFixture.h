#pragma once

// A library tree in a temporary folder, with HOME pointed at it, and a capture of the
// library log. Header-only so every test program of this folder can include it.

#include "vtvplugin/PlistSettings.h"

#include <gtest/gtest.h>

#include <QByteArray>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QStringList>
#include <QTemporaryDir>
#include <QVariant>

#include <initializer_list>

// Collects the lines of the "vireo.library" category while it lives.
class LogCapture {
public:
    LogCapture()
    {
        lines().clear();
        m_previous = qInstallMessageHandler(&LogCapture::handle);
    }
    ~LogCapture() { qInstallMessageHandler(m_previous); }
    LogCapture(const LogCapture &) = delete;
    LogCapture &operator=(const LogCapture &) = delete;

    static QStringList &lines()
    {
        static QStringList captured;
        return captured;
    }
    int countStartingWith(const QString &prefix) const
    {
        int n = 0;
        for (const QString &line : lines())
            n += line.startsWith(prefix) ? 1 : 0;
        return n;
    }
    bool has(const QString &line) const { return lines().contains(line); }

private:
    static void handle(QtMsgType, const QMessageLogContext &context, const QString &message)
    {
        if (context.category && QLatin1String(context.category) == QLatin1String("vireo.library"))
            lines().append(message);
    }

    QtMessageHandler m_previous = nullptr;
};

class LibraryFixture : public ::testing::Test {
protected:
    // Two well-formed pair identifiers.
    static inline const QString kPairA = QStringLiteral("0123456789abcdef0123456789ABCDEF");
    static inline const QString kPairB = QStringLiteral("FEDCBA9876543210fedcba9876543210");

    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        m_savedHome = qgetenv("HOME");
        m_home = m_dir.path() + QStringLiteral("/home");
        ASSERT_TRUE(QDir().mkpath(m_home + QStringLiteral("/Vireo")));
        ASSERT_TRUE(QDir().mkpath(m_home + QStringLiteral("/Movies")));
        qputenv("HOME", QFile::encodeName(m_home));
    }
    void TearDown() override { qputenv("HOME", m_savedHome); }

    QString root() const { return m_dir.path(); }
    QString home() const { return m_home; }
    QString movies() const { return m_home + QStringLiteral("/Movies/"); }
    QString pairDir(const QString &pairID) const { return m_home + QStringLiteral("/Vireo/") + pairID; }

    // A pair folder with its configuration. A null pairTime leaves the key out.
    void makePair(const QString &pairID, const QString &clientName, const QVariant &pairTime = {}) const
    {
        ASSERT_TRUE(QDir().mkpath(pairDir(pairID)));
        QSettings config(pairDir(pairID) + QStringLiteral("/vireo.plist"), PlistSettings::format());
        config.beginGroup(QStringLiteral("global"));
        config.setValue(QStringLiteral("clientName"), clientName);
        if (pairTime.isValid())
            config.setValue(QStringLiteral("pairTime"), pairTime);
        config.endGroup();
        config.sync();
        ASSERT_EQ(config.status(), QSettings::NoError);
    }

    void writeStats(const QString &pairID, const QVariant &lastSyncTime, const QString &peer) const
    {
        QSettings stats(pairDir(pairID) + QStringLiteral("/vireostats.plist"), PlistSettings::format());
        stats.setValue(QStringLiteral("lastSyncTime"), lastSyncTime);
        stats.setValue(QStringLiteral("lastSyncPeer"), peer);
        stats.sync();
    }

    static void writeFile(const QString &path, const QByteArray &content = QByteArrayLiteral("movie"))
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
        file.write(content);
    }

    // The files of one movie in a pair folder: identifier + "." + each suffix.
    void makeMovie(const QString &pairID, const QString &identifier,
                   std::initializer_list<const char *> suffixes = {"m4v", "xml"}) const
    {
        for (const char *suffix : suffixes)
            writeFile(pairDir(pairID) + QLatin1Char('/') + identifier + QLatin1Char('.')
                      + QLatin1String(suffix));
    }

    static void makeLink(const QString &target, const QString &linkPath)
    {
        ASSERT_TRUE(QFile::link(target, linkPath)) << linkPath.toStdString();
    }

    // The link text of `path`, empty when it is not a link.
    static QString linkTarget(const QString &path) { return QFileInfo(path).symLinkTarget(); }

    static bool isLink(const QString &path) { return QFileInfo(path).isSymLink(); }

    // Every entry below `folder`, relative and sorted, links not followed: a snapshot
    // to prove that an operation changed nothing.
    static QStringList tree(const QString &folder)
    {
        QStringList entries;
        QDirIterator it(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                        QDirIterator::Subdirectories);
        while (it.hasNext())
            entries.append(it.next().mid(folder.length()));
        entries.sort();
        return entries;
    }

    // The names directly inside `folder`, sorted.
    static QStringList names(const QString &folder)
    {
        return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                                      QDir::Name);
    }

private:
    QTemporaryDir m_dir;
    QString m_home;
    QByteArray m_savedHome;
};
