#include "vtvplugin/trailers/TrailerCredentials.h"
#include "vtvplugin/trailers/TrailerEndpoint.h"
#include "vtvplugin/trailers/TrailerRequest.h"
#include "vtvplugin/trailers/TrailerTypes.h"

#include <QFile>
#include <QSettings>
#include <QTemporaryDir>
#include <QtGlobal>

#include <gtest/gtest.h>

namespace {

// Digests computed independently (Python's hashlib) over the documented input.
TEST(TrailerRequestTest, SignsMethodParametersAndSecretInOrder)
{
    const auto parameters = TrailerRequest::loaderParameters(QStringLiteral("KEY123"));
    EXPECT_EQ(TrailerRequest::signatureInput(QStringLiteral("vireo.stats.videos.getTopRated"),
                  parameters, QStringLiteral("s3cret")),
        QStringLiteral("vireo.stats.videos.getTopRatedapiKeyKEY123limit25offset0timePeriod4"
                       "videoLoadBitVector17s3cret"));
    EXPECT_EQ(TrailerRequest::signature(QStringLiteral("vireo.stats.videos.getTopRated"),
                  parameters, QStringLiteral("s3cret")),
        QStringLiteral("22c3fe78c51db7780e4afff0a9bb49202bf0758f"));
    // Non-ASCII input is hashed as UTF-8.
    EXPECT_EQ(TrailerRequest::signature(QStringLiteral("vireo.stats.videos.getMostViewed"),
                  TrailerRequest::loaderParameters(QStringLiteral("K\u00e9")), QStringLiteral("x")),
        QStringLiteral("f1ec9244fe23b3f15027d31c4109e0649d54a921"));
    // The digest stops at the first NUL, as it always has.
    EXPECT_EQ(TrailerRequest::signature(
                  QStringLiteral("abc"), {}, QString(QChar(0)) + QStringLiteral("tail")),
        QStringLiteral("a9993e364706816aba3e25717850c26c9cd0d89d"));
    EXPECT_EQ(
        TrailerRequest::sha1Hex({}), QStringLiteral("da39a3ee5e6b4b0d3255bfef95601890afd80709"));
}

TEST(TrailerRequestTest, BodyIsByteForByteTheServicesCall)
{
    const QByteArray expected
        = "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n"
          "<methodCall><methodName>vireo.stats.videos.getTopFavorites</methodName>\n"
          "<params><param><value><struct>\n"
          "<member><name>apiKey</name><value><string>K</string></value></member>\n"
          "<member><name>limit</name><value><int>25</int></value></member>\n"
          "<member><name>offset</name><value><int>0</int></value></member>\n"
          "<member><name>timePeriod</name><value><int>4</int></value></member>\n"
          "<member><name>videoLoadBitVector</name><value><int>17</int></value></member>\n"
          "<member><name>signature</name><value><string>S</string></value></member>\n"
          "</struct></value></param></params>\n"
          "</methodCall>";
    EXPECT_EQ(TrailerRequest::body(QStringLiteral("vireo.stats.videos.getTopFavorites"),
                  QStringLiteral("K"), QStringLiteral("S")),
        expected);
}

TEST(TrailerRequestTest, TheTableAndTheHiddenCredentials)
{
    EXPECT_EQ(TrailerTypes::title(2), QStringLiteral("Top Rated"));
    EXPECT_EQ(TrailerTypes::methodName(1), QStringLiteral("vireo.stats.videos.getMostDownloaded"));
    EXPECT_TRUE(TrailerTypes::title(4).isNull());
    EXPECT_TRUE(TrailerTypes::methodName(-1).isNull());
    EXPECT_EQ(TrailerTypes::typeForMethod(QStringLiteral("vireo.stats.videos.getTopFavorites")), 3);
    EXPECT_EQ(
        TrailerTypes::typeForMethod(QStringLiteral("vireo.stats.videos.getTopFavorites ")), -1);

    const QString key = TrailerCredentials::apiKey();
    const QString secret = TrailerCredentials::signingSecret();
    EXPECT_EQ(key.size(), 32);
    EXPECT_FALSE(secret.isEmpty());
    EXPECT_NE(key, secret);
    // Neither is a readable text in the program's own file.
    QFile self(QStringLiteral("/proc/self/exe"));
    ASSERT_TRUE(self.open(QIODevice::ReadOnly));
    const QByteArray image = self.readAll();
    EXPECT_FALSE(image.contains(key.toLatin1()));
    EXPECT_FALSE(image.contains(secret.toLatin1()));
}

class TrailerEndpointTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_config.isValid());
        qputenv("XDG_CONFIG_HOME", m_config.path().toUtf8());
        qunsetenv(TrailerEndpoint::environmentVariable());
    }
    void TearDown() override { qunsetenv(TrailerEndpoint::environmentVariable()); }

    void setSetting(const QString& value)
    {
        QSettings settings(TrailerEndpoint::settingsFilePath(), QSettings::IniFormat);
        settings.setValue(TrailerEndpoint::settingKey(), value);
    }

    QTemporaryDir m_config;
};

TEST_F(TrailerEndpointTest, EnvironmentThenSettingThenTheLocalService)
{
    EXPECT_EQ(
        TrailerEndpoint::xmlrpcUrl().toString(), QStringLiteral("http://127.0.0.1:8642/xmlrpc/"));
    setSetting(QStringLiteral("http://feeds.example:9000"));
    EXPECT_EQ(TrailerEndpoint::xmlrpcUrl().toString(),
        QStringLiteral("http://feeds.example:9000/xmlrpc/"));
    qputenv(TrailerEndpoint::environmentVariable(), "http://[::1]:7000/");
    EXPECT_EQ(TrailerEndpoint::xmlrpcUrl().toString(), QStringLiteral("http://[::1]:7000/xmlrpc/"));
    // A bad value is passed over for the next one.
    qputenv(TrailerEndpoint::environmentVariable(), "ftp://127.0.0.1:21");
    EXPECT_EQ(TrailerEndpoint::xmlrpcUrl().toString(),
        QStringLiteral("http://feeds.example:9000/xmlrpc/"));
    setSetting(QStringLiteral("not a url"));
    EXPECT_EQ(
        TrailerEndpoint::xmlrpcUrl().toString(), QStringLiteral("http://127.0.0.1:8642/xmlrpc/"));
}

TEST_F(TrailerEndpointTest, OnlyPlainHttpBasesAreAccepted)
{
    for (const char* bad : { "https://h:1", "http://", "http://h/path", "http://u:p@h:1",
             "http://h:1?q", "http://h:1#f", "http://h:99999", "h:1", "" })
        EXPECT_FALSE(TrailerEndpoint::parseBase(QString::fromLatin1(bad)).isValid()) << bad;
    EXPECT_EQ(TrailerEndpoint::parseBase(QStringLiteral("http://box.local")).toString(),
        QStringLiteral("http://box.local"));
    EXPECT_EQ(TrailerEndpoint::parseBase(QStringLiteral(" http://10.0.0.2:81/ ")).toString(),
        QStringLiteral("http://10.0.0.2:81"));
}

} // namespace
