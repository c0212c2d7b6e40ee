// vireo-feedd's parts that judge what a client or a catalogue says, table by table, and
// the real program: its demo, its log, its exit statuses and a clean stop on SIGTERM.

#include "FeeddProcess.h"
#include "FeeddTestSupport.h"
#include "RequestFramer.h"

#include <QStandardPaths>
#include <QTcpServer>
#include <QTemporaryDir>

using namespace feeddtest;
using Verdict = RequestFramer::Verdict;

TEST(RequestFramer, FollowsRequestsAndRefusesWhatItWillNotRead)
{
    const struct {
        const char* name;
        QByteArray bytes;
        Verdict verdict;
        qint64 completed;
    } cases[] = {
        { "two gets", "GET /a HTTP/1.1\r\nHost: x\r\n\r\nGET /b HTTP/1.1\r\n\r\n",
            Verdict::Continue, 2 },
        { "a body, then a get",
            "POST / HTTP/1.1\r\ncontent-length: 5\r\n\r\nGET /GET / HTTP/1.1\r\n\r\n",
            Verdict::Continue, 2 },
        { "the largest body", "POST / HTTP/1.1\r\nContent-Length: 1000\r\n\r\n", Verdict::Continue,
            0 },
        { "a larger one", "POST / HTTP/1.1\r\nContent-Length: 1001\r\n\r\n", Verdict::BodyTooLarge,
            0 },
        { "a chunked one", "POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n",
            Verdict::LengthRequired, 0 },
        { "a refusal sticks", "GET\r\n\r\nGET / HTTP/1.1\r\n\r\n", Verdict::BadRequest, 0 },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        // Whole, and one byte at a time: the chunking of the stream must not matter.
        RequestFramer whole(100, 1000);
        RequestFramer bytewise(100, 1000);
        EXPECT_EQ(whole.feed(c.bytes), c.verdict);
        Verdict last = Verdict::Continue;
        for (const char byte : c.bytes)
            last = bytewise.feed(QByteArrayView(&byte, 1));
        EXPECT_EQ(last, c.verdict);
        EXPECT_EQ(whole.completedRequests(), c.completed);
        EXPECT_EQ(bytewise.completedRequests(), c.completed);
    }
}

TEST(Catalogue, LoadingNamesTheFileAndItsFirstProblem)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(Catalogue::fileName());
    writeLibrary(dir.path(), 3);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray json = file.readAll();
    ASSERT_TRUE(QFile::link(path, dir.filePath("link.jpg")));
    const struct {
        QByteArray from, to;
        const char* error;
    } cases[] = {
        { "\"thumbnail\": \"t02.jpg\"", "\"thumbnail\": \"link.jpg\"", "links are not served" },
        { "\"id\": \"t01\"", "\"id\": \"t00\"", "trailers[1]: the id \"t00\" is used twice" },
        { "\"id\": \"t01\"", "\"id\": \"../t01\"", "trailers[1]: \"id\" must be" },
        { "\"media\": \"t02.flv\"", "\"media\": \"../t02.flv\"", "trailers[2]: \"media\"" },
        { "\"media\": \"t02.flv\"", "\"media\": \"missing.flv\"",
            "trailers[2]: \"missing.flv\" is not a readable regular file" },
        { "\"size\": 40001,", "", "" }, // the media file's size is taken
        { "{", "[", "not JSON" },
    };
    for (const auto& c : cases) {
        ASSERT_TRUE(json.contains(c.from)) << c.from.toStdString();
        writeFile(path, QByteArray(json).replace(c.from, c.to));
        QString error;
        const std::optional<Catalogue> catalogue = Catalogue::load(dir.path(), &error);
        EXPECT_EQ(!catalogue, *c.error != 0) << c.to.toStdString();
        EXPECT_TRUE(
            !*c.error || (error.startsWith(path) && error.contains(QString::fromUtf8(c.error))))
            << error.toStdString();
        EXPECT_TRUE(!catalogue || catalogue->trailers()[1].size == 40001);
    }
}

// The real program over its demo (whose lists the loader's tests check): it says where it
// listens, serves a range of a clip, logs the request, and stops cleanly on SIGTERM.
TEST(FeeddProgram, ServesItsDemoAndStopsCleanlyOnSigterm)
{
    if (QStandardPaths::findExecutable(QStringLiteral("ffmpeg")).isEmpty())
        GTEST_SKIP() << "ffmpeg, which makes the demo's clips, is not installed";
    application();
    FeeddProcess feedd(QStringLiteral(VIREO_FEEDD_BIN));
    const QString base = feedd.waitForBase();
    ASSERT_FALSE(base.isEmpty()) << feedd.output().toStdString();
    const HttpReply clip = exchange(
        quint16(base.section(u':', -1).toUInt()), get("/media/0001x.flv", "Range: bytes=0-2\r\n"));
    EXPECT_EQ(clip.status, 206);
    EXPECT_EQ(clip.body, "FLV");
    EXPECT_EQ(feedd.terminate(), 0);
    EXPECT_TRUE(feedd.output().contains("GET /media/0001x.flv 206 3 bytes "))
        << feedd.output().toStdString();
}

TEST(FeeddProgram, ExitStatusesSayWhyItDidNotRun)
{
    application();
    QTemporaryDir dir;
    writeLibrary(dir.path(), 2);
    QTcpServer taken;
    ASSERT_TRUE(taken.listen(QHostAddress::LocalHost, 0));
    const QString busy = QStringLiteral("127.0.0.1:%1").arg(taken.serverPort());
    const struct {
        QStringList arguments;
        int status;
        const char* says; // on standard output for 0, standard error otherwise
    } cases[] = {
        { { "--help" }, 0, "--listen <HOST:PORT>" },
        { { "--bogus" }, 2, "Unknown option 'bogus'" },
        { { "--listen", "nowhere" }, 2, "--listen wants HOST:PORT" },
        { { "--library", dir.filePath("missing") }, 1, "missing/catalogue.json" },
        { { "--library", dir.path(), "--listen", busy }, 1, "cannot listen on 127.0.0.1" },
    };
    for (const auto& c : cases) {
        QProcess feedd;
        feedd.start(QStringLiteral(VIREO_FEEDD_BIN), c.arguments);
        if (!feedd.waitForFinished(10000))
            feedd.kill();
        EXPECT_EQ(feedd.exitStatus() == QProcess::NormalExit ? feedd.exitCode() : -1, c.status)
            << c.says;
        const QByteArray text
            = c.status == 0 ? feedd.readAllStandardOutput() : feedd.readAllStandardError();
        EXPECT_TRUE(text.contains(c.says)) << text.toStdString();
    }
}
