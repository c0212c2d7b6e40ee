// The loader against the real local feed service, vireo-feedd, over its demo library:
// each of the four lists arrives whole and in the service's order.
#include "FeeddProcess.h"

#include "vtvplugin/media/VTVMediaAsset.h"
#include "vtvplugin/trailers/TrailerTypes.h"
#include "vtvplugin/trailers/VireoTrailerLoader.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimer>
#include <QUrl>

#include <gtest/gtest.h>

namespace {

constexpr int kLoadLimitMS = 15'000;

class TrailerLoaderFeedTest : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        s_feed = std::make_unique<FeeddProcess>(QStringLiteral(VIREO_FEEDD_BIN));
        s_base = s_feed->waitForBase();
    }
    static void TearDownTestSuite() { s_feed.reset(); }

    void SetUp() override
    {
        ASSERT_FALSE(s_base.isEmpty()) << "vireo-feedd said: " << qPrintable(s_feed->output());
    }

    // The service's own description of what it serves, read beside it.
    static QJsonObject catalogue()
    {
        QFile file(s_feed->demoLibrary() + QStringLiteral("/catalogue.json"));
        return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object()
                                              : QJsonObject();
    }

    static QJsonObject trailerById(const QJsonObject& catalogue, const QString& id)
    {
        for (const QJsonValue& trailer : catalogue.value(QStringLiteral("trailers")).toArray()) {
            if (trailer.toObject().value(QStringLiteral("id")).toString() == id)
                return trailer.toObject();
        }
        return {};
    }

    static inline std::unique_ptr<FeeddProcess> s_feed;
    static inline QString s_base;
};

TEST_F(TrailerLoaderFeedTest, EachListArrivesInTheServicesOrder)
{
    const QJsonObject served = catalogue();
    for (int type = 0; type < TrailerTypes::kCount; ++type) {
        SCOPED_TRACE(TrailerTypes::title(type).toStdString());
        VireoTrailerLoader loader;
        loader.setEndpoint(QUrl(s_base + QStringLiteral("/xmlrpc/")));
        bool ok = false;
        QString error;
        QEventLoop loop;
        QObject::connect(&loader, &VireoTrailerLoader::loadFinished, &loop,
            [&](bool succeeded, const QString& reason) {
                ok = succeeded;
                error = reason;
                loop.quit();
            });
        QTimer::singleShot(kLoadLimitMS, &loop, &QEventLoop::quit);
        ASSERT_TRUE(loader.fetchStats(type, nullptr));
        loop.exec();
        ASSERT_FALSE(loader.isLoading()) << "no answer within the limit";
        ASSERT_TRUE(ok) << error.toStdString();

        const QJsonArray order = served.value(QStringLiteral("lists"))
                                     .toObject()
                                     .value(TrailerTypes::methodName(type))
                                     .toArray();
        ASSERT_FALSE(order.isEmpty());
        ASSERT_EQ(loader.assetListSize(), order.size());
        EXPECT_TRUE(loader.isLoaded());
        for (long i = 0; i < loader.assetListSize(); ++i) {
            const VTVMediaAsset& asset = *loader.assetList()[i];
            const QString id = order.at(i).toString();
            const QJsonObject trailer = trailerById(served, id);
            EXPECT_EQ(asset.vireoContentId(), id);
            EXPECT_EQ(asset.title(), trailer.value(QStringLiteral("title")).toString());
            EXPECT_EQ(asset.duration(), trailer.value(QStringLiteral("duration")).toInt());
            EXPECT_EQ(asset.trailerSize(), trailer.value(QStringLiteral("size")).toInt());
            EXPECT_TRUE(asset.mediaURL().startsWith(s_base + QLatin1Char('/')));
            EXPECT_TRUE(asset.mediaURL().endsWith(QStringLiteral("x.flv")));
            EXPECT_TRUE(asset.previewURL().endsWith(QStringLiteral("/vtv_ca_") + id + ".jpg"));
        }
    }
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
