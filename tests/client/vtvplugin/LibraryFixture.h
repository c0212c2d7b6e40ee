#pragma once

// A library tree in a temporary home, with helpers that lay out pairs and movies the
// way the desktop players' sync does. Header-only: the test programs of this folder
// include it.

#include "TempHome.h"

#include "vtvplugin/platform/PlistCodec.h"

#include <QDir>
#include <QVariant>

using namespace Qt::StringLiterals;

class LibraryFixture : public TempHome {
protected:
    const QString kPairA = u"0123456789abcdef0123456789ABCDEF"_s;
    const QString kPairB = u"FEDCBA9876543210fedcba9876543210"_s;

    void SetUp() override
    {
        TempHome::SetUp();
        ASSERT_TRUE(QDir().mkpath(home() + u"/Vireo"_s) && QDir().mkpath(movies()));
    }

    QString file(const QString& pairID, const QString& name) const
    {
        return pairDir(pairID) + u'/' + name;
    }
    // Beside the home folder: outside the library.
    QString outside(const QString& name) const { return root() + u'/' + name; }

    // Property lists written and read with the codec itself, so that a test sets up or
    // inspects a file without going through the code it checks. Empty when unreadable.
    static void writePlist(const QString& path, const QVariantMap& map)
    {
        writeFile(path, PlistCodec::encode(map));
    }
    static QVariantMap readPlist(const QString& path)
    {
        QVariantMap map;
        PlistCodec::decode(readFile(path), map);
        return map;
    }

    // A pair folder with its configuration, and its statistics when syncTime is valid;
    // an invalid pairTime leaves that key out.
    void makePair(const QString& pairID, const QString& clientName, const QVariant& pairTime = {},
        const QVariant& syncTime = {}, const QString& peer = {}) const
    {
        QVariantMap config { { u"global/clientName"_s, clientName } };
        if (pairTime.isValid())
            config.insert(u"global/pairTime"_s, pairTime);
        writePlist(file(pairID, u"vireo.plist"_s), config);
        if (syncTime.isValid())
            writePlist(file(pairID, u"vireostats.plist"_s),
                { { u"lastSyncTime"_s, syncTime }, { u"lastSyncPeer"_s, peer } });
    }
    // The files of one movie: identifier + "." + each suffix.
    void makeMovie(const QString& pairID, const QString& id,
        const QStringList& suffixes = { u"m4v"_s, u"xml"_s }) const
    {
        for (const QString& suffix : suffixes)
            writeFile(file(pairID, id + u'.' + suffix));
    }
};
