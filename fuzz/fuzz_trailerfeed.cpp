// Any bytes as the reply to a trailer list call, through both stages of its parse.
// Besides surviving it, what was made must keep the parser's promises: only videos with
// an id, a title and a trailer URL become trailers, each URL has "x.flv" appended and
// each thumbnail names its id, the list stays within its bound, and a failed stage says
// why.
#include "vtvplugin/media/VTVMediaAsset.h"
#include "vtvplugin/trailers/TrailerFeedParser.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace {

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "trailer feed parser broke its promise: %s\n", what);
    __builtin_trap();
}

void check(const VTVMediaAsset& trailer)
{
    if (trailer.title().isEmpty() || trailer.vireoContentId().isEmpty())
        fail("a trailer without a title or an id");
    // A text that is no URL once "x.flv" is appended leaves the trailer without one; the
    // player then says so.
    const QString url = trailer.mediaURL();
    if (!url.isEmpty() && !url.endsWith(QLatin1String("x.flv")))
        fail("a trailer URL without x.flv");
    if (!trailer.previewURL().endsWith(
            QLatin1String("vtv_ca_") + trailer.vireoContentId() + QLatin1String(".jpg")))
        fail("a thumbnail that does not name its trailer");
    if (trailer.hasBeenPlayed())
        fail("a trailer that resumes");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray reply(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    int trailers = 0;
    TrailerFeedParser parser([&trailers](std::shared_ptr<VTVMediaAsset> trailer) {
        if (!trailer)
            fail("a null trailer");
        check(*trailer);
        ++trailers;
    });
    QString error;
    if (!parser.parseReply(reply, &error) && error.isEmpty())
        fail("a failed reply left no error text");
    if (!parser.isFault() && !parser.parsePayload(&error) && error.isEmpty())
        fail("a failed list left no error text");
    if (trailers > TrailerFeedParser::kMaxVideos)
        fail("more trailers than the bound");
    return 0;
}
