#include "reposit/ROptions.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

// Every settings store of a test lives in its own temporary folder, never in ~/.config.
class OptionsTest : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_dir.path());
    }

    void store(const QString& app, const QString& key, const QVariant& value) const
    {
        QSettings settings(QSettings::UserScope, ROptions::settingsDomain(), app);
        settings.setValue(key, value);
    }

    static QString defaultHost()
    {
        QString host;
        int port = 0;
        ROptions::getServerName(host, port);
        return host;
    }

    QTemporaryDir m_dir;
};

TEST_F(OptionsTest, PortsFallBackToTheirDefaults)
{
    struct Row {
        const char* name;
        QVariant stored; // invalid: key absent
        int plain;
    };
    const Row rows[] = {
        { "absent", QVariant(), 80 },
        { "zero", QVariant(0), 80 },
        { "not a number", QVariant(QStringLiteral("eighty")), 80 },
        { "stored", QVariant(8080), 8080 },
    };
    for (const Row& row : rows) {
        if (row.stored.isValid()) {
            store(QStringLiteral("server"), QStringLiteral("port"), row.stored);
            store(QStringLiteral("server"), QStringLiteral("sport"), row.stored);
        }
        QString host;
        int port = -1;
        ROptions::getServerName(host, port);
        EXPECT_EQ(port, row.plain) << row.name;
        ROptions::getXMLRPCServerName(host, port);
        EXPECT_EQ(port, 443) << row.name;
    }
}

TEST_F(OptionsTest, OnlyHostsOfTheServiceDomainsAreKept)
{
    const QString builtIn = defaultHost();
    ASSERT_FALSE(builtIn.isEmpty());
    ASSERT_TRUE(builtIn.contains(ROptions::settingsDomain()));

    struct Row {
        const char* stored;
        bool kept;
    };
    const Row rows[] = {
        { "media.VIREOMOVIES.net", true },
        { "cdn.vireo-media.com", true },
        { "vireomovies.evil.example", false },
        { "evil.example.org", false },
        { "", false },
    };
    for (const Row& row : rows) {
        store(QStringLiteral("server"), QStringLiteral("host"), QString::fromLatin1(row.stored));
        QString host;
        int port = 0;
        ROptions::getServerName(host, port);
        EXPECT_EQ(host, row.kept ? QString::fromLatin1(row.stored) : builtIn) << row.stored;
    }
}

TEST_F(OptionsTest, ServerUrlJoinsHostAndPlainPort)
{
    store(QStringLiteral("server"), QStringLiteral("host"), QStringLiteral("media.vireomovies.net"));
    store(QStringLiteral("server"), QStringLiteral("port"), 8080);
    EXPECT_EQ(ROptions::getServerURL(), QStringLiteral("http://media.vireomovies.net:8080"));
}

TEST_F(OptionsTest, RemoteDownloadsDefaultOnAndStoredOnlyWhenOff)
{
    EXPECT_TRUE(ROptions::remoteDownloadsEnabled());

    ROptions::setRemoteDownloadsEnabled(false);
    EXPECT_FALSE(ROptions::remoteDownloadsEnabled());
    const QString file = m_dir.path() + QLatin1Char('/') + ROptions::settingsDomain() + QStringLiteral("/options.conf");
    ASSERT_TRUE(QFileInfo::exists(file));

    ROptions::setRemoteDownloadsEnabled(true);
    EXPECT_TRUE(ROptions::remoteDownloadsEnabled());
    const QSettings stored(file, QSettings::IniFormat);
    EXPECT_FALSE(stored.contains(QStringLiteral("remote_downloads")));
}

// ---- ensureFileIsPublic ----------------------------------------------------------

mode_t modeOf(const QString& path)
{
    struct stat info {};
    if (::stat(QFile::encodeName(path).constData(), &info) != 0)
        return 0;
    return info.st_mode & 07777;
}

TEST_F(OptionsTest, EnsureFileIsPublicOpensUpFilesAndFolders)
{
    const QString missing = m_dir.filePath(QStringLiteral("new.plist"));
    const QString privateFile = m_dir.filePath(QStringLiteral("private"));
    const QString folder = m_dir.filePath(QStringLiteral("folder"));
    QFile file(privateFile);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("kept");
    file.close();
    ASSERT_EQ(::chmod(QFile::encodeName(privateFile).constData(), 0600), 0);
    ASSERT_TRUE(QDir().mkdir(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));

    const mode_t oldMask = ::umask(022);
    ensureFileIsPublic(missing);
    ::umask(oldMask);
    ensureFileIsPublic(privateFile);
    ensureFileIsPublic(folder);

    EXPECT_EQ(modeOf(missing), mode_t(0666));
    EXPECT_EQ(QFileInfo(missing).size(), 0);
    EXPECT_EQ(modeOf(privateFile), mode_t(0666));
    EXPECT_EQ(QFileInfo(privateFile).size(), 4) << "contents are left alone";
    EXPECT_EQ(modeOf(folder), mode_t(0777));
}

TEST_F(OptionsTest, EnsureFileIsPublicInAMissingFolderCreatesNothing)
{
    const QString path = m_dir.filePath(QStringLiteral("absent/file"));
    ensureFileIsPublic(path);
    EXPECT_FALSE(QFileInfo::exists(path));
    EXPECT_FALSE(QFileInfo::exists(m_dir.filePath(QStringLiteral("absent"))));
}

} // namespace
