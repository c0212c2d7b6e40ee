#include "TempHome.h"

#include "foundation/HomeFolder.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>

namespace {

constexpr auto kEverything = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;

} // namespace

void TempHome::SetUp()
{
    ASSERT_TRUE(m_dir.isValid());
    ASSERT_TRUE(QDir().mkpath(home()));
    HomeFolder::set(home());
    m_log = std::make_unique<LogCapture>();
}

void TempHome::TearDown()
{
    m_log.reset();
    HomeFolder::set(QString());
}

void TempHome::writeFile(const QString& path, const QByteArray& content)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile out(path);
    ASSERT_TRUE(out.open(QIODevice::WriteOnly) && out.write(content) == content.size())
        << qPrintable(path);
}

QByteArray TempHome::readFile(const QString& path)
{
    QFile in(path);
    return in.open(QIODevice::ReadOnly) ? in.readAll() : QByteArray();
}

void TempHome::makeLink(const QString& target, const QString& link)
{
    ASSERT_TRUE(QFile::link(target, link)) << qPrintable(link);
}

void TempHome::makeFifo(const QString& path)
{
    ASSERT_EQ(mkfifo(QFile::encodeName(path).constData(), 0644), 0) << qPrintable(path);
}

QStringList TempHome::words(const char* text)
{
    return QString::fromUtf8(text).split(u' ', Qt::SkipEmptyParts);
}

QStringList TempHome::names(const QString& folder)
{
    return QDir(folder).entryList(kEverything, QDir::Name);
}

QStringList TempHome::tree(const QString& folder)
{
    QStringList entries;
    QDirIterator it(folder, kEverything, QDirIterator::Subdirectories);
    while (it.hasNext())
        entries.append(it.next());
    entries.sort();
    return entries;
}

QStringList TempHome::snapshot(const QString& folder)
{
    QStringList entries;
    for (const QString& path : tree(folder)) {
        const QFileInfo info(path);
        QString line = path.mid(folder.length());
        if (info.isSymLink()) {
            line += QStringLiteral(" -> ") + info.symLinkTarget();
        } else if (info.isFile()) {
            line += QLatin1Char(' ')
                + QString::fromLatin1(
                    QCryptographicHash::hash(readFile(path), QCryptographicHash::Sha1).toHex());
        }
        entries.append(line);
    }
    entries.sort();
    return entries;
}
