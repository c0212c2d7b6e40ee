// parseRequest against a bare expat pass over the same ~10 MB methodCall, in one
// binary and one run; the closing lines give each benchmark's time against expat's.
// On a shared machine, interleave repetitions so that load hits all alike (the ratios
// then compare the medians):
//   bench_xmlrpc --benchmark_repetitions=7 --benchmark_enable_random_interleaving=true
//                --benchmark_report_aggregates_only=true

#include "reposit/svcxmlrpc/RXMLRPCObject.h"
#include "reposit/sxp/CParser.h"
#include "reposit/sxp/IPersistObj.h"
#include "reposit/sxp/Tag.h"

#include "RatioReporter.h"

#include <benchmark/benchmark.h>
#include <expat.h>

#include <memory>
#include <random>
#include <string>

namespace {

constexpr std::size_t kTargetBytes = 10 * 1024 * 1024;

std::string member(const char* name, const std::string& value)
{
    return std::string("<member>\n<name>") + name + "</name>\n<value>" + value
        + "</value>\n</member>\n";
}

std::string text(const std::string& s)
{
    return "<string>" + s + "</string>";
}

std::string array(const std::string& values)
{
    return "<array>\n<data>\n" + values + "</data>\n</array>";
}

// One movie of a library sync: numbers, texts with entities and UTF-8, arrays and
// nested structs. The words come from a fixed seed, so every run parses the same bytes.
std::string movie(int n, std::mt19937& rng)
{
    static const char* const kWords[] = { "the", "night", "river", "A &amp; B", "caf\xC3\xA9",
        "return", "of", "city", "lights", "&lt;cut&gt;" };
    const auto words = [&rng](int count) {
        std::string s = kWords[rng() % 10];
        for (int i = 1; i < count; ++i)
            s += std::string(" ") + kWords[rng() % 10];
        return s;
    };
    std::string tags;
    for (int i = 0; i < 4; ++i)
        tags += "<value>" + text(words(1)) + "</value>\n";
    std::string cast;
    for (int i = 0; i < 3; ++i) {
        cast += "<value><struct>\n" + member("name", text(words(2)));
        cast += member("role", text(words(1)));
        cast += member("order", "<i4>" + std::to_string(i) + "</i4>") + "</struct></value>\n";
    }
    std::string out = "<struct>\n" + member("id", "<int>" + std::to_string(n) + "</int>");
    out += member("title", text(words(3)));
    out += member("summary", text(words(25)));
    out += member(
        "rating", "<double>" + std::to_string(double(rng() % 1000) / 100.0) + "</double>");
    out += member("hd", rng() % 2 ? "<boolean>1</boolean>" : "<boolean>0</boolean>");
    out += member("tags", array(tags)) + member("cast", array(cast));
    const std::string size = "<int>" + std::to_string(rng() % 2000000000) + "</int>";
    const std::string path = text("/Vireo/player/" + std::to_string(n) + ".m4v");
    out += member("file", "<struct>\n" + member("size", size) + member("path", path) + "</struct>");
    return out + "</struct>";
}

const std::string& document()
{
    static const std::string doc = [] {
        std::mt19937 rng { 20240611 };
        std::string out = "<?xml version=\"1.0\"?>\n<methodCall>\n<methodName>library.sync"
                          "</methodName>\n<params>\n";
        for (int n = 0; out.size() < kTargetBytes; ++n)
            out += "<param>\n<value>" + movie(n, rng) + "</value>\n</param>\n";
        return out + "</params>\n</methodCall>\n";
    }();
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
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(document().size()));
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
        if (parser.FeedAll(doc.data(), doc.size()) != 0)
            state.SkipWithError("the event layer rejected the document");
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(document().size()));
}
BENCHMARK(BM_SxpEventsOnly)->Unit(benchmark::kMillisecond);

// parseRequest alone, then the whole life of a message: parse, then free every value.
void BM_ParseRequest(benchmark::State& state, bool timeFree)
{
    const QByteArray doc = QByteArray::fromStdString(document());
    for (auto _ : state) {
        auto object = std::make_unique<RXMLRPCObject>();
        QString error;
        if (!object->parseRequest(doc, error))
            state.SkipWithError(error.toUtf8().constData());
        benchmark::DoNotOptimize(object->params().size());
        if (!timeFree)
            state.PauseTiming();
        object.reset();
        if (!timeFree)
            state.ResumeTiming();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(document().size()));
}
BENCHMARK_CAPTURE(BM_ParseRequest, alone, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ParseRequest, and_free, true)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    for (const char* name :
        { "BM_SxpEventsOnly", "BM_ParseRequest/alone", "BM_ParseRequest/and_free" })
        reporter.printRatio(name, name, "BM_BareExpat");
    benchmark::Shutdown();
    return 0;
}
