#include "reposit/QtLockedFile.h"

#include <QCoreApplication>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>
#include <fcntl.h>
#include <future>
#include <unistd.h>

namespace {

QStringList g_warnings;

void collectWarnings(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    if (type == QtWarningMsg)
        g_warnings << message;
}

class LockedFileTest : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        m_path = m_dir.filePath(QStringLiteral("shared.db"));
        QFile create(m_path);
        ASSERT_TRUE(create.open(QIODevice::WriteOnly));
        g_warnings.clear();
        m_previousHandler = qInstallMessageHandler(collectWarnings);
    }
    void TearDown() override
    {
        qInstallMessageHandler(m_previousHandler);
        if (m_helper.state() != QProcess::NotRunning) {
            m_helper.closeWriteChannel();
            m_helper.waitForFinished(5000);
        }
    }

    // Another process that takes fcntl locks on the same file when told to.
    void startHelper()
    {
        m_helper.start(QStringLiteral(LOCK_HELPER_PATH), { m_path });
        ASSERT_TRUE(m_helper.waitForStarted(5000));
        ASSERT_EQ(ask(nullptr), "ready");
    }
    // Sends a command (if any) and waits for the helper's one-line answer.
    QByteArray ask(const char* command)
    {
        if (command)
            m_helper.write(QByteArray(command) + '\n');
        while (!m_helper.canReadLine()) {
            if (!m_helper.waitForReadyRead(10000))
                return "timeout";
        }
        return m_helper.readLine().trimmed();
    }

    QTemporaryDir m_dir;
    QString m_path;
    QProcess m_helper;
    QtMessageHandler m_previousHandler = nullptr;
};

TEST_F(LockedFileTest, ClosedFileRefusesWithAWarning)
{
    QtLockedFile file(m_path);
    EXPECT_FALSE(file.lock(QtLockedFile::WriteLock));
    EXPECT_FALSE(file.lock(QtLockedFile::NoLock));
    EXPECT_FALSE(file.unlock());
    EXPECT_FALSE(file.isLocked());
    EXPECT_EQ(g_warnings, QStringList({ QStringLiteral("QtLockedFile::lock(): file is not opened"),
                                        QStringLiteral("QtLockedFile::lock(): file is not opened"),
                                        QStringLiteral("QtLockedFile::unlock(): file is not opened") }));
}

TEST_F(LockedFileTest, HeldModeIsAnsweredWithoutAskingTheSystem)
{
    QtLockedFile file(m_path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.lock(QtLockedFile::WriteLock));

    // Swap in a read-only descriptor: any write-lock request through it now fails.
    const int readOnly = ::open(QFile::encodeName(m_path).constData(), O_RDONLY);
    ASSERT_GE(readOnly, 0);
    ASSERT_EQ(::dup2(readOnly, file.handle()), file.handle());
    ::close(readOnly);

    EXPECT_TRUE(file.lock(QtLockedFile::WriteLock));
    EXPECT_TRUE(g_warnings.isEmpty());

    EXPECT_TRUE(file.lock(QtLockedFile::NoLock));
    EXPECT_FALSE(file.lock(QtLockedFile::WriteLock, false));
    EXPECT_EQ(file.lockMode(), QtLockedFile::NoLock);
    EXPECT_EQ(g_warnings.join(u'\n').toStdString(), "QtLockedFile::lock(): fcntl: Bad file descriptor");
}

TEST_F(LockedFileTest, WritersExcludeEveryoneReadersShare)
{
    startHelper();
    QtLockedFile file(m_path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_EQ(ask("write"), "ok");
    EXPECT_FALSE(file.lock(QtLockedFile::WriteLock, false));
    EXPECT_FALSE(file.lock(QtLockedFile::ReadLock, false));
    EXPECT_EQ(file.lockMode(), QtLockedFile::NoLock);
    EXPECT_TRUE(g_warnings.isEmpty()) << "a lock held elsewhere is no error";

    ASSERT_EQ(ask("read"), "ok"); // downgrade in the other process
    EXPECT_TRUE(file.lock(QtLockedFile::ReadLock, false));
    EXPECT_EQ(file.lockMode(), QtLockedFile::ReadLock);
    EXPECT_EQ(ask("unlock"), "ok");
    EXPECT_EQ(ask("trywrite"), "busy");

    EXPECT_TRUE(file.unlock());
    EXPECT_FALSE(file.isLocked());
    EXPECT_EQ(ask("trywrite"), "ok");
}

TEST_F(LockedFileTest, ReadToWriteReleasesTheReadLockFirst)
{
    startHelper();
    QtLockedFile file(m_path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.lock(QtLockedFile::ReadLock));
    ASSERT_EQ(ask("read"), "ok");

    // The other reader blocks the write lock; an in-place upgrade would keep our read lock.
    EXPECT_FALSE(file.lock(QtLockedFile::WriteLock, false));
    EXPECT_EQ(file.lockMode(), QtLockedFile::NoLock);
    EXPECT_EQ(ask("trywrite"), "ok") << "the other process took the file in between";
    EXPECT_TRUE(g_warnings.isEmpty());
}

TEST_F(LockedFileTest, BlockingLockWaitsForTheOtherProcess)
{
    startHelper();
    ASSERT_EQ(ask("write"), "ok");

    QtLockedFile file(m_path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    auto locked = std::async(std::launch::async, [&file] { return file.lock(QtLockedFile::WriteLock, true); });
    EXPECT_EQ(locked.wait_for(std::chrono::milliseconds(200)), std::future_status::timeout);

    EXPECT_EQ(ask("unlock"), "ok");
    EXPECT_TRUE(locked.get());
    EXPECT_EQ(ask("tryread"), "busy");
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
