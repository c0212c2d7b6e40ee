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
    static void storeServer(const char* key, const QVariant& value)
    {
        QSettings(QSettings::UserScope, ROptions::settingsDomain(), QStringLiteral("server"))
            .setValue(QLatin1String(key), value);
    }

    QTemporaryDir m_dir;
};

TEST_F(OptionsTest, PortsFallBackToTheirDefaults)
{
    const struct {
        const char* name;
        QVariant stored; // invalid: key absent
        int plain;
    } rows[] = {
        { "absent", QVariant(), 80 },
        { "zero", QVariant(0), 80 },
        { "not a number", QVariant(QStringLiteral("eighty")), 80 },
        { "stored", QVariant(8080), 8080 },
    };
    storeServer("host", QStringLiteral("media.vireomovies.net"));
    for (const auto& row : rows) {
        if (row.stored.isValid()) {
            storeServer("port", row.stored);
            storeServer("sport", row.stored);
        }
        QString host;
        int port = -1;
        ROptions::getXMLRPCServerName(host, port);
        EXPECT_EQ(port, 443) << row.name;
        EXPECT_EQ(ROptions::getServerURL(),
                  QStringLiteral("http://media.vireomovies.net:%1").arg(row.plain)) << row.name;
    }
}

TEST_F(OptionsTest, OnlyHostsOfTheServiceDomainsAreKept)
{
    QString builtIn;
    int port = 0;
    ROptions::getServerName(builtIn, port);
    ASSERT_TRUE(builtIn.contains(ROptions::settingsDomain()));

    const struct {
        const char* stored;
        bool kept;
    } rows[] = {
        { "media.VIREOMOVIES.net", true },
        { "cdn.vireo-media.com", true },
        { "vireomovies.evil.example", false },
        { "", false },
    };
    for (const auto& row : rows) {
        storeServer("host", QString::fromLatin1(row.stored));
        QString host;
        ROptions::getServerName(host, port);
        EXPECT_EQ(host, row.kept ? QString::fromLatin1(row.stored) : builtIn) << row.stored;
    }
}

TEST_F(OptionsTest, RemoteDownloadsDefaultOnAndStoredOnlyWhenOff)
{
    const QString file = m_dir.path() + QLatin1Char('/') + ROptions::settingsDomain() + QStringLiteral("/options.conf");
    EXPECT_TRUE(ROptions::remoteDownloadsEnabled());
    ROptions::setRemoteDownloadsEnabled(false);
    EXPECT_FALSE(ROptions::remoteDownloadsEnabled());
    EXPECT_TRUE(QSettings(file, QSettings::IniFormat).contains(QStringLiteral("remote_downloads")));
    ROptions::setRemoteDownloadsEnabled(true);
    EXPECT_TRUE(ROptions::remoteDownloadsEnabled());
    EXPECT_FALSE(QSettings(file, QSettings::IniFormat).contains(QStringLiteral("remote_downloads")));
}

mode_t modeOf(const QString& path)
{
    struct stat info {};
    return ::stat(QFile::encodeName(path).constData(), &info) == 0 ? info.st_mode & 07777 : 0;
}

TEST_F(OptionsTest, EnsureFileIsPublicOpensUpFilesAndFolders)
{
    const QString created = m_dir.filePath(QStringLiteral("new.plist"));
    const QString existing = m_dir.filePath(QStringLiteral("private"));
    const QString folder = m_dir.filePath(QStringLiteral("folder"));
    const QString unreachable = m_dir.filePath(QStringLiteral("absent/file"));
    QFile file(existing);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("kept") == 4);
    file.close();
    ASSERT_TRUE(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner));
    ASSERT_TRUE(QDir().mkdir(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));

    const mode_t oldMask = ::umask(022);
    for (const QString& path : { created, existing, folder, unreachable })
        ensureFileIsPublic(path);
    ::umask(oldMask);

    EXPECT_EQ(modeOf(created), mode_t(0666));
    EXPECT_EQ(QFileInfo(created).size(), 0);
    EXPECT_EQ(modeOf(existing), mode_t(0666));
    EXPECT_EQ(QFileInfo(existing).size(), 4);
    EXPECT_EQ(modeOf(folder), mode_t(0777));
    EXPECT_FALSE(QFileInfo::exists(m_dir.filePath(QStringLiteral("absent"))));
}

} // namespace
