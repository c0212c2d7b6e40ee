// parseRequest against a bare expat pass over the same ~10 MB methodCall, in one
// binary and one run; the closing lines give each benchmark's share of expat's
// throughput. On a shared machine, interleave repetitions so that load hits all alike:
//   bench_xmlrpc --benchmark_repetitions=7 --benchmark_enable_random_interleaving=true
//                --benchmark_report_aggregates_only=true

#include "reposit/svcxmlrpc/RXMLRPCObject.h"
#include "reposit/sxp/CParser.h"
#include "reposit/sxp/IPersistObj.h"
#include "reposit/sxp/Tag.h"

#include <benchmark/benchmark.h>
#include <expat.h>

#include <cstdio>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>

namespace {

constexpr std::size_t kTargetBytes = 10 * 1024 * 1024;

class DocumentWriter {
public:
    std::string make()
    {
        m_out
            = "<?xml "
              "version=\"1.0\"?>\n<methodCall>\n<methodName>library.sync</methodName>\n<params>\n";
        for (int n = 0; m_out.size() < kTargetBytes; ++n) {
            m_out += "<param>\n<value>";
            movie(n);
            m_out += "</value>\n</param>\n";
        }
        m_out += "</params>\n</methodCall>\n";
        return std::move(m_out);
    }

private:
    void member(const char* name)
    {
        m_out += "<member>\n<name>";
        m_out += name;
        m_out += "</name>\n<value>";
    }
    void endMember() { m_out += "</value>\n</member>\n"; }
    void text(const std::string& s) { m_out += "<string>" + s + "</string>"; }
    void integer(int i) { m_out += "<int>" + std::to_string(i) + "</int>"; }
    void real(double d) { m_out += "<double>" + std::to_string(d) + "</double>"; }
    void boolean(bool b) { m_out += b ? "<boolean>1</boolean>" : "<boolean>0</boolean>"; }

    std::string words(int count)
    {
        static const char* const kWords[] = { "the", "night", "river", "A &amp; B", "caf\xC3\xA9",
            "return", "of", "city", "lights", "&lt;cut&gt;" };
        std::string s;
        for (int i = 0; i < count; ++i) {
            if (i)
                s += ' ';
            s += kWords[m_rng() % 10];
        }
        return s;
    }

    void movie(int n)
    {
        m_out += "<struct>\n";
        member("id"), integer(n), endMember();
        member("title"), text(words(3)), endMember();
        member("summary"), text(words(25)), endMember();
        member("rating"), real(static_cast<double>(m_rng() % 1000) / 100.0), endMember();
        member("hd"), boolean(m_rng() % 2), endMember();
        member("tags"), m_out += "<array>\n<data>\n";
        for (int i = 0; i < 4; ++i)
            m_out += "<value>", text(words(1)), m_out += "</value>\n";
        m_out += "</data>\n</array>", endMember();
        member("cast"), m_out += "<array>\n<data>\n";
        for (int i = 0; i < 3; ++i) {
            m_out += "<value><struct>\n";
            member("name"), text(words(2)), endMember();
            member("role"), text(words(1)), endMember();
            member("order"), m_out += "<i4>" + std::to_string(i) + "</i4>", endMember();
            m_out += "</struct></value>\n";
        }
        m_out += "</data>\n</array>", endMember();
        member("file"), m_out += "<struct>\n";
        member("size"), integer(static_cast<int>(m_rng() % 2000000000)), endMember();
        member("path"), text("/Vireo/player/" + std::to_string(n) + ".m4v"), endMember();
        m_out += "</struct>", endMember();
        m_out += "</struct>";
    }

    std::string m_out;
    std::mt19937 m_rng { 20240611 };
};

const std::string& document()
{
    static const std::string doc = DocumentWriter().make();
    return doc;
}

void XMLCALL onStart(void*, const XML_Char*, const XML_Char**) { }
void XMLCALL onEnd(void*, const XML_Char*) { }
void XMLCALL onText(void*, const XML_Char*, int) { }

void BM_BareExpat(benchmark::State& state)
{
    const std::string& doc = document();
    for (auto _ : state) {
        XML_Parser parser = XML_ParserCreate(nullptr);
        XML_SetElementHandler(parser, onStart, onEnd);
        XML_SetCharacterDataHandler(parser, onText);
        const auto status = XML_Parse(parser, doc.data(), static_cast<int>(doc.size()), 1);
        XML_ParserFree(parser);
        if (status != XML_STATUS_OK)
            state.SkipWithError("expat rejected the document");
        benchmark::DoNotOptimize(status);
    }
    state.SetBytesProcessed(
        static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(doc.size()));
}
BENCHMARK(BM_BareExpat)->Unit(benchmark::kMillisecond);

// The event layer alone: every element goes through CParser to a handler that does nothing.
class NullHandler : public SXP::IPersistObj {
public:
    const SXP::Tag& GetClassTag() const override { return m_tag; }
    void WriteElement(
        SXP::IOutStreamT<SXP::CFileOutStream>*, std::map<std::string, std::string>&) override
    {
    }
    void BeginElement(SXP::IParser*, SXP::IElement*) override { }
    void EndElement(SXP::IParser*, SXP::IElement*) override { }

private:
    const SXP::Tag m_tag { "methodCall" };
};

void BM_SxpEventsOnly(benchmark::State& state)
{
    const std::string& doc = document();
    for (auto _ : state) {
        NullHandler handler;
        SXP::CParser parser(&handler);
        const int code = parser.FeedAll(doc.data(), doc.size());
        if (code != 0)
            state.SkipWithError("the event layer rejected the document");
        benchmark::DoNotOptimize(code);
    }
    state.SetBytesProcessed(
        static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(doc.size()));
}
BENCHMARK(BM_SxpEventsOnly)->Unit(benchmark::kMillisecond);

// parseRequest alone: freeing the parsed values afterwards is timed separately below.
void BM_ParseRequest(benchmark::State& state)
{
    const QByteArray doc = QByteArray::fromStdString(document());
    for (auto _ : state) {
        auto object = std::make_unique<RXMLRPCObject>();
        QString error;
        if (!object->parseRequest(doc, error))
            state.SkipWithError(error.toUtf8().constData());
        benchmark::DoNotOptimize(object->params().size());
        state.PauseTiming();
        object.reset();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * doc.size());
}
BENCHMARK(BM_ParseRequest)->Unit(benchmark::kMillisecond);

// The whole life of a message: parse, then free every value.
void BM_ParseRequestAndFree(benchmark::State& state)
{
    const QByteArray doc = QByteArray::fromStdString(document());
    for (auto _ : state) {
        RXMLRPCObject object;
        QString error;
        if (!object.parseRequest(doc, error))
            state.SkipWithError(error.toUtf8().constData());
        benchmark::DoNotOptimize(object.params().size());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * doc.size());
}
BENCHMARK(BM_ParseRequestAndFree)->Unit(benchmark::kMillisecond);

// Prints the usual table and remembers each benchmark's bytes per second for the ratio.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            const auto it = run.counters.find("bytes_per_second");
            if (it == run.counters.end())
                continue;
            // With --benchmark_repetitions the median stands for the benchmark.
            const std::string& function = run.run_name.function_name;
            if (run.run_type == Run::RT_Aggregate) {
                if (run.aggregate_name == "median")
                    m_rates[function] = it->second.value;
            } else if (!m_medianSeen.count(function)) {
                m_rates[function] = it->second.value;
            }
            if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median")
                m_medianSeen.insert(function);
        }
    }

    void printRatio() const
    {
        const auto expat = m_rates.find("BM_BareExpat");
        if (expat == m_rates.end() || expat->second <= 0)
            return;
        std::printf("document: %.1f MB\n", static_cast<double>(document().size()) / 1e6);
        for (const auto& [name, rate] : m_rates)
            std::printf("%-20s %8.1f MB/s  %.2f of bare expat\n", name.c_str(), rate / 1e6,
                rate / expat->second);
    }

private:
    std::map<std::string, double> m_rates;
    std::set<std::string> m_medianSeen;
};

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printRatio();
    benchmark::Shutdown();
    return 0;
}
