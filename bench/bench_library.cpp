// The library folder code against the bare system calls it is built on, in the same
// binary and run:
//   getLinksInDir over 10,000 links  vs  a bare readdir + lstat + readlink loop
//   du over a 100,000-file tree      vs  a bare nftw walk
//   makeTitleUnique + setupLinks for the 10,000th movie of a pair (no baseline)
// The trees are made in a temporary folder at start and removed at the end. After the
// runs the ratios are printed against their goals (1.3x and 1.2x).

#include "vtvplugin/library/DiskUsage.h"
#include "vtvplugin/library/JUtils.h"

#include "BenchHome.h"
#include "RatioReporter.h"

#include <benchmark/benchmark.h>

#include <QLoggingCategory>

#include <array>
#include <cstring>
#include <string>

#include <climits>
#include <dirent.h>
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int kLinkCount = 10000;
constexpr int kTreeFolders = 100;
constexpr int kFilesPerFolder = 1000; // 100 x 1000 = 100,000 files
constexpr int kPairMovies = 10000;

const BenchHome* g_home = nullptr;

// Beside the library, made once: a folder of links into the pair and a tree for du.
void makeTrees()
{
    const std::string links = g_home->path("/links");
    const std::string tree = g_home->path("/du");
    mkdir(links.c_str(), 0755);
    for (int i = 0; i < kLinkCount; ++i) {
        const std::string target = std::string("/home/viewer/Vireo/") + BenchHome::kPairID
            + "/movie" + std::to_string(i) + ".m4v";
        symlink(target.c_str(), (links + "/" + BenchHome::movieName(i) + ".m4v").c_str());
    }
    mkdir(tree.c_str(), 0755);
    for (int d = 0; d < kTreeFolders; ++d) {
        const std::string folder = tree + "/folder" + std::to_string(d);
        mkdir(folder.c_str(), 0755);
        for (int f = 0; f < kFilesPerFolder; ++f)
            BenchHome::touch(folder + "/file" + std::to_string(f) + ".m4v");
    }
}

void BM_BareLinkLoop(benchmark::State& state)
{
    const std::string folder = g_home->path("/links") + "/";
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
    const QString folder = QString::fromStdString(g_home->path("/links"));
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
    const std::string root = g_home->path("/du");
    for (auto _ : state) {
        g_nftwBlocks = 0;
        g_nftwEntries = 0;
        nftw(root.c_str(), addEntry, 64, FTW_PHYS);
        benchmark::DoNotOptimize(g_nftwBlocks);
    }
    state.SetItemsProcessed(state.iterations() * g_nftwEntries);
}
BENCHMARK(BM_BareNftw)->Unit(benchmark::kMillisecond);

void BM_Du(benchmark::State& state)
{
    const std::string root = g_home->path("/du");
    qint32 entries = 0;
    for (auto _ : state) {
        entries = 0;
        benchmark::DoNotOptimize(du(root.c_str(), entries));
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
    const QString pairID = QString::fromLatin1(BenchHome::kPairID);
    const QString fileName = QStringLiteral("id%1.m4v").arg(kPairMovies);
    QString title;
    for (auto _ : state) {
        title = QString::fromStdString(BenchHome::movieName(1)).toUpper();
        JUtils::makeTitleUnique(pairID, fileName, title);
        JUtils::setupLinks(pairID, fileName, title);
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

    // A pair of 10,000 movies, the first 9,999 linked under their titles.
    const BenchHome home(kPairMovies, kPairMovies - 1, { ".m4v", ".xml" });
    if (!home.valid())
        return 1;
    g_home = &home;
    makeTrees();

    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printRatio(
        "getLinksInDir / bare readdir loop", "BM_GetLinksInDir", "BM_BareLinkLoop", 1.3);
    reporter.printRatio("du / bare nftw walk", "BM_Du", "BM_BareNftw", 1.2);
    benchmark::Shutdown();
    g_home = nullptr;
    return 0;
}
