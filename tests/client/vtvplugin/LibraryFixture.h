#pragma once

// A library tree in a temporary folder with HOME pointed at it, and a capture of the
// appliance's own log categories ("vireo.*"). Header-only: the test programs of this
// folder include it.

#include "vtvplugin/PlistSettings.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

// What the appliance logged ("vireo.*" categories) since the test began or last
// cleared it.
inline QStringList g_log;

inline void captureLog(QtMsgType, const QMessageLogContext& context, const QString& message)
{
    if (QByteArrayView(context.category).startsWith("vireo."))
        g_log.append(message);
}

class LibraryFixture : public ::testing::Test {
protected:
    const QString kPairA = u"0123456789abcdef0123456789ABCDEF"_s;
    const QString kPairB = u"FEDCBA9876543210fedcba9876543210"_s;

    void SetUp() override
    {
        ASSERT_TRUE(
            m_dir.isValid() && QDir().mkpath(home() + u"/Vireo"_s) && QDir().mkpath(movies()));
        qputenv("HOME", QFile::encodeName(home()));
        g_log.clear();
        m_savedHandler = qInstallMessageHandler(&captureLog);
    }
    void TearDown() override
    {
        qInstallMessageHandler(m_savedHandler);
        qputenv("HOME", m_savedHome);
    }

    QString root() const { return m_dir.path(); }
    QString home() const { return m_dir.path() + u"/home"_s; }
    QString movies() const { return home() + u"/Movies/"_s; }
    QString pairDir(const QString& pairID) const { return home() + u"/Vireo/"_s + pairID; }
    QString file(const QString& pairID, const QString& name) const
    {
        return pairDir(pairID) + u'/' + name;
    }

    // A pair folder with its configuration, and its statistics when syncTime is valid;
    // an invalid pairTime leaves that key out.
    void makePair(const QString& pairID, const QString& clientName, const QVariant& pairTime = {},
        const QVariant& syncTime = {}, const QString& peer = {}) const
    {
        QDir().mkpath(pairDir(pairID));
        QSettings config(file(pairID, u"vireo.plist"_s), PlistSettings::format());
        config.setValue(u"global/clientName"_s, clientName);
        if (pairTime.isValid())
            config.setValue(u"global/pairTime"_s, pairTime);
        if (!syncTime.isValid())
            return;
        QSettings stats(file(pairID, u"vireostats.plist"_s), PlistSettings::format());
        stats.setValue(u"lastSyncTime"_s, syncTime);
        stats.setValue(u"lastSyncPeer"_s, peer);
    }
    // Makes the parent folders as needed.
    static void writeFile(const QString& path, const QByteArray& content = "movie")
    {
        QDir().mkpath(QFileInfo(path).path());
        QFile out(path);
        ASSERT_TRUE(out.open(QIODevice::WriteOnly) && out.write(content) == content.size())
            << qPrintable(path);
    }
    // The files of one movie: identifier + "." + each suffix.
    void makeMovie(const QString& pairID, const QString& id,
        const QStringList& suffixes = { u"m4v"_s, u"xml"_s }) const
    {
        for (const QString& suffix : suffixes)
            writeFile(file(pairID, id + u'.' + suffix));
    }
    static void makeLink(const QString& target, const QString& link)
    {
        ASSERT_TRUE(QFile::link(target, link)) << qPrintable(link);
    }
    // "a b c" as a list, for short expectations of folder contents.
    static QStringList words(const char* text)
    {
        return QString::fromUtf8(text).split(u' ', Qt::SkipEmptyParts);
    }
    static constexpr auto kEverything
        = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
    static QStringList names(const QString& folder)
    {
        return QDir(folder).entryList(kEverything, QDir::Name);
    }
    // Every entry below `folder`, links not followed: proof that nothing changed.
    static QStringList tree(const QString& folder)
    {
        QStringList entries;
        QDirIterator it(folder, kEverything, QDirIterator::Subdirectories);
        while (it.hasNext())
            entries.append(it.next());
        entries.sort();
        return entries;
    }

private:
    QTemporaryDir m_dir;
    const QByteArray m_savedHome = qgetenv("HOME");
    QtMessageHandler m_savedHandler = nullptr;
};
