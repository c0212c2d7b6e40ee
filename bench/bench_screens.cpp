// The top menu's scan of the movie folder against the bare system calls under it, in
// the same binary and run:
//   refreshList over a 10,000-entry Movies folder   vs  a bare opendir + readdir + stat loop
//   the whole top menu made over that folder        vs  the same loop
// The home (one pair, its 10,000 movies linked into Movies the way sync lays them out)
// is made in a temporary folder at start and removed at the end. After the runs the
// ratios are printed against their goal (1.5x).

#include "foundation/HomeFolder.h"
#include "toolkit/scene/Scene.h"
#include "vtvplugin/screens/VireoApplianceController.h"

#include "RatioReporter.h"

#include <benchmark/benchmark.h>

#include <QDir>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QTemporaryDir>

#include <array>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <climits>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int kMovieCount = 10000;
constexpr double kGoal = 1.5;

const std::string kPairID = "0123456789abcdef0123456789ABCDEF";

void touch(const std::string& path)
{
    const int fd = open(path.c_str(), O_CREAT | O_WRONLY | O_TRUNC, 0644);
    if (fd >= 0)
        close(fd);
}

std::string movieName(int i)
{
    std::array<char, 32> buffer {};
    std::snprintf(buffer.data(), buffer.size(), "Movie %05d.m4v", i);
    return buffer.data();
}

// A home whose Movies folder holds one link per movie into the pair folder.
class Library {
public:
    Library()
    {
        const std::string home = m_dir.path().toStdString();
        const std::string pair = home + "/Vireo/" + kPairID;
        m_movies = home + "/Movies";
        QDir().mkpath(QString::fromStdString(pair));
        QDir().mkpath(QString::fromStdString(m_movies));
        touch(pair + "/vireo.plist");
        for (int i = 1; i <= kMovieCount; ++i) {
            const std::string file = pair + "/id" + std::to_string(i) + ".m4v";
            touch(file);
            symlink(file.c_str(), (m_movies + "/" + movieName(i)).c_str());
        }
        HomeFolder::set(QString::fromStdString(home));
    }

    bool valid() const { return m_dir.isValid(); }
    const std::string& movies() const { return m_movies; }

private:
    QTemporaryDir m_dir;
    std::string m_movies;
};

Library* g_library = nullptr;

// What any listing of the folder costs at least: every name read, kept, and stat'ed
// through its link to tell folders from files.
void BM_BareScan(benchmark::State& state)
{
    const std::string folder = g_library->movies() + "/";
    std::array<char, PATH_MAX> path {};
    std::memcpy(path.data(), folder.data(), folder.size());
    std::vector<std::string> names;
    for (auto _ : state) {
        names.clear();
        size_t folders = 0;
        DIR* dir = opendir(folder.c_str());
        while (const dirent* entry = readdir(dir)) {
            if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0)
                continue;
            names.emplace_back(entry->d_name);
            std::strcpy(path.data() + folder.size(), entry->d_name);
            struct stat status { };
            if (stat(path.data(), &status) == 0 && S_ISDIR(status.st_mode))
                ++folders;
        }
        closedir(dir);
        benchmark::DoNotOptimize(folders);
    }
    if (names.size() != kMovieCount)
        state.SkipWithError("wrong entry count");
    state.SetItemsProcessed(state.iterations() * kMovieCount);
}
BENCHMARK(BM_BareScan)->Unit(benchmark::kMillisecond);

void BM_RefreshList(benchmark::State& state)
{
    shell::Scene scene;
    VireoApplianceController top(scene);
    for (auto _ : state) {
        top.refreshList();
        benchmark::DoNotOptimize(top.itemCount());
    }
    // The movies, then "Settings".
    if (top.itemCount() != kMovieCount + 1)
        state.SkipWithError("wrong row count");
    state.SetItemsProcessed(state.iterations() * kMovieCount);
}
BENCHMARK(BM_RefreshList)->Unit(benchmark::kMillisecond);

// Everything entering the appliance costs: the pairs' sync times, the scan, the list.
void BM_TopMenu(benchmark::State& state)
{
    shell::Scene scene;
    long rows = 0;
    for (auto _ : state) {
        const auto top = std::make_unique<VireoApplianceController>(scene);
        rows = top->itemCount();
        benchmark::DoNotOptimize(rows);
    }
    if (rows != kMovieCount + 1)
        state.SkipWithError("wrong row count");
    state.SetItemsProcessed(state.iterations() * kMovieCount);
}
BENCHMARK(BM_TopMenu)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    // The menus measure texts, which needs a GUI application; no display is drawn to.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("vireo.*.debug=false"));

    const auto library = std::make_unique<Library>();
    if (!library->valid())
        return 1;
    g_library = library.get();

    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printRatio("refreshList / bare readdir+stat", "BM_RefreshList", "BM_BareScan", kGoal);
    reporter.printRatio("top menu made / bare readdir+stat", "BM_TopMenu", "BM_BareScan", kGoal);
    benchmark::Shutdown();
    g_library = nullptr;
    return 0;
}
