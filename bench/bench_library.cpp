// The library folder code against the bare system calls it is built on, in the same
// binary and run:
//   getLinksInDir over 10,000 links  vs  a bare readdir + lstat + readlink loop
//   du over a 100,000-file tree      vs  a bare nftw walk
//   makeTitleUnique + setupLinks for the 10,000th movie of a pair (no baseline)
// The trees are made in a temporary folder at start and removed at the end. After the
// runs the ratios are printed against their goals (1.3x and 1.2x).

#include "foundation/HomeFolder.h"
#include "vtvplugin/library/DiskUsage.h"
#include "vtvplugin/library/JUtils.h"

#include "RatioReporter.h"

#include <benchmark/benchmark.h>

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QLoggingCategory>
#include <QTemporaryDir>

#include <array>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <string>

#include <climits>
#include <dirent.h>
#include <fcntl.h>
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int kLinkCount = 10000;
constexpr int kTreeFolders = 100;
constexpr int kFilesPerFolder = 1000; // 100 x 1000 = 100,000 files
constexpr int kPairMovies = 10000;

const QString kPairID = QStringLiteral("0123456789abcdef0123456789ABCDEF");

void touch(const std::string& path)
{
    const int fd = open(path.c_str(), O_CREAT | O_WRONLY | O_TRUNC, 0644);
    if (fd >= 0)
        close(fd);
}

std::string movieName(int i)
{
    std::array<char, 32> buffer {};
    std::snprintf(buffer.data(), buffer.size(), "Movie %05d", i);
    return buffer.data();
}

// Everything the benchmarks walk, made once.
class Trees {
public:
    Trees()
    {
        m_base = m_dir.path().toStdString();
        m_links = m_base + "/links";
        m_du = m_base + "/du";
        makeLinkFolder();
        makeDuTree();
        makeLibrary();
    }

    const std::string& links() const { return m_links; }
    const std::string& duRoot() const { return m_du; }
    bool valid() const { return m_dir.isValid(); }

private:
    void makeLinkFolder() const
    {
        mkdir(m_links.c_str(), 0755);
        for (int i = 0; i < kLinkCount; ++i) {
            const std::string target = "/home/viewer/Vireo/" + kPairID.toStdString() + "/movie"
                + std::to_string(i) + ".m4v";
            symlink(target.c_str(), (m_links + "/" + movieName(i) + ".m4v").c_str());
        }
    }

    void makeDuTree() const
    {
        mkdir(m_du.c_str(), 0755);
        for (int d = 0; d < kTreeFolders; ++d) {
            const std::string folder = m_du + "/folder" + std::to_string(d);
            mkdir(folder.c_str(), 0755);
            for (int f = 0; f < kFilesPerFolder; ++f)
                touch(folder + "/file" + std::to_string(f) + ".m4v");
        }
    }

    // A pair with 10,000 movies, the first 9,999 linked under their titles.
    void makeLibrary() const
    {
        const std::string home = m_base + "/home";
        const std::string pair = home + "/Vireo/" + kPairID.toStdString();
        QDir().mkpath(QString::fromStdString(pair));
        QDir().mkpath(QString::fromStdString(home + "/Movies"));
        touch(pair + "/vireo.plist");
        for (int i = 1; i <= kPairMovies; ++i) {
            for (const char* suffix : { ".m4v", ".xml" }) {
                const std::string file = pair + "/id" + std::to_string(i) + suffix;
                touch(file);
                if (i < kPairMovies)
                    symlink(file.c_str(), (home + "/Movies/" + movieName(i) + suffix).c_str());
            }
        }
        HomeFolder::set(QString::fromStdString(home));
    }

    QTemporaryDir m_dir;
    std::string m_base;
    std::string m_links;
    std::string m_du;
};

Trees* g_trees = nullptr;

void BM_BareLinkLoop(benchmark::State& state)
{
    const std::string folder = g_trees->links() + "/";
    std::array<char, PATH_MAX> path {};
    std::array<char, PATH_MAX> target {};
    std::memcpy(path.data(), folder.data(), folder.size());
    for (auto _ : state) {
        size_t found = 0;
        DIR* dir = opendir(folder.c_str());
        while (const dirent* entry = readdir(dir)) {
            std::strcpy(path.data() + folder.size(), entry->d_name);
            struct stat status { };
            if (lstat(path.data(), &status) != 0 || !S_ISLNK(status.st_mode))
                continue;
            const ssize_t length = readlink(path.data(), target.data(), target.size() - 1);
            if (length > 0)
                found += static_cast<size_t>(length);
        }
        closedir(dir);
        benchmark::DoNotOptimize(found);
    }
    state.SetItemsProcessed(state.iterations() * kLinkCount);
}
BENCHMARK(BM_BareLinkLoop)->Unit(benchmark::kMillisecond);

void BM_GetLinksInDir(benchmark::State& state)
{
    const QString folder = QString::fromStdString(g_trees->links());
    JUtils::LinkList links;
    for (auto _ : state) {
        JUtils::getLinksInDir(folder, links);
        benchmark::DoNotOptimize(links.size());
    }
    if (links.size() != kLinkCount)
        state.SkipWithError("wrong link count");
    state.SetItemsProcessed(state.iterations() * kLinkCount);
}
BENCHMARK(BM_GetLinksInDir)->Unit(benchmark::kMillisecond);

quint64 g_nftwBlocks = 0;
qint32 g_nftwEntries = 0;

int addEntry(const char*, const struct stat* status, int, struct FTW*)
{
    g_nftwBlocks += static_cast<quint64>(status->st_blocks);
    ++g_nftwEntries;
    return 0;
}

void BM_BareNftw(benchmark::State& state)
{
    for (auto _ : state) {
        g_nftwBlocks = 0;
        g_nftwEntries = 0;
        nftw(g_trees->duRoot().c_str(), addEntry, 64, FTW_PHYS);
        benchmark::DoNotOptimize(g_nftwBlocks);
    }
    state.SetItemsProcessed(state.iterations() * g_nftwEntries);
}
BENCHMARK(BM_BareNftw)->Unit(benchmark::kMillisecond);

void BM_Du(benchmark::State& state)
{
    qint32 entries = 0;
    for (auto _ : state) {
        entries = 0;
        benchmark::DoNotOptimize(du(g_trees->duRoot().c_str(), entries));
    }
    if (entries != kTreeFolders * kFilesPerFolder + kTreeFolders + 1)
        state.SkipWithError("wrong entry count");
    state.SetItemsProcessed(state.iterations() * entries);
}
BENCHMARK(BM_Du)->Unit(benchmark::kMillisecond);

// The 10,000th movie's title clashes with the first one's in letter case only, so
// every run walks the title map twice and re-lays the movie's two links.
void BM_SetupLinksTenThousandthMovie(benchmark::State& state)
{
    const QString fileName = QStringLiteral("id%1.m4v").arg(kPairMovies);
    QString title;
    for (auto _ : state) {
        title = QString::fromStdString(movieName(1)).toUpper();
        JUtils::makeTitleUnique(kPairID, fileName, title);
        JUtils::setupLinks(kPairID, fileName, title);
    }
    if (title != QStringLiteral("MOVIE 00001 (2)"))
        state.SkipWithError("unexpected title");
}
BENCHMARK(BM_SetupLinksTenThousandthMovie)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    // The title clash is logged on every run otherwise.
    QLoggingCategory::setFilterRules(QStringLiteral("vireo.appliance.library.debug=false"));

    const auto trees = std::make_unique<Trees>();
    if (!trees->valid())
        return 1;
    g_trees = trees.get();

    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printRatio(
        "getLinksInDir / bare readdir loop", "BM_GetLinksInDir", "BM_BareLinkLoop", 1.3);
    reporter.printRatio("du / bare nftw walk", "BM_Du", "BM_BareNftw", 1.2);
    benchmark::Shutdown();
    g_trees = nullptr;
    return 0;
}
