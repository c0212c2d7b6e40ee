// The top menu's scan of the movie folder against the bare system calls under it, in
// the same binary and run:
//   refreshList over a 10,000-entry Movies folder   vs  a bare opendir + readdir + stat loop
//   the whole top menu made over that folder        vs  the same loop
// The home (one pair, its 10,000 movies linked into Movies the way sync lays them out)
// is made in a temporary folder at start and removed at the end. After the runs the
// ratios are printed against their goal (1.5x).

#include "toolkit/scene/Scene.h"
#include "vtvplugin/screens/VireoApplianceController.h"

#include "BenchHome.h"
#include "RatioReporter.h"

#include <benchmark/benchmark.h>

#include <QGuiApplication>
#include <QLoggingCategory>

#include <array>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <climits>
#include <dirent.h>
#include <sys/stat.h>

namespace {

constexpr int kMovieCount = 10000;

const BenchHome* g_home = nullptr;

// What any listing of the folder costs at least: every name read, kept, and stat'ed
// through its link to tell folders from files.
void BM_BareScan(benchmark::State& state)
{
    const std::string folder = g_home->path("/Movies/");
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

    const BenchHome home(kMovieCount, kMovieCount, { ".m4v" });
    if (!home.valid())
        return 1;
    g_home = &home;

    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printRatio("refreshList / bare readdir+stat", "BM_RefreshList", "BM_BareScan", 1.5);
    reporter.printRatio("top menu made / bare readdir+stat", "BM_TopMenu", "BM_BareScan", 1.5);
    benchmark::Shutdown();
    g_home = nullptr;
    return 0;
}
