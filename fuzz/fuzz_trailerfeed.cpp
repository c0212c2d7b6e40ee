// Any bytes as the reply to a trailer list call, through both stages of its parse.
// Besides surviving it, what was made must keep the parser's promises: only videos with
// an id, a title and a trailer URL become trailers, each URL has "x.flv" appended, is
// http or https and names a host, each thumbnail names its id and is on the web too
// when the feed gave one, the texts and the list stay within their bounds, and a failed
// stage says why.
#include "vtvplugin/media/VTVMediaAsset.h"
#include "vtvplugin/platform/BoundedText.h"
#include "vtvplugin/trailers/TrailerFeedParser.h"

#include <QUrl>

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace {

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "trailer feed parser broke its promise: %s\n", what);
    __builtin_trap();
}

bool isWebUrl(const QString& text)
{
    const QUrl url(text);
    return (url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https"))
        && !url.host().isEmpty();
}

void check(const VTVMediaAsset& trailer)
{
    if (trailer.title().isEmpty() || trailer.vireoContentId().isEmpty())
        fail("a trailer without a title or an id");
    if (trailer.title().size() > BoundedText::kMaxFieldChars
        || trailer.vireoContentId().size() > BoundedText::kMaxFieldChars)
        fail("a title or an id past its bound");
    // The description as shown may add "Vireo Says: " and a carriage return for the four
    // asterisks it drops.
    if (trailer.mediaDescription().size() > BoundedText::kMaxFieldChars + 9)
        fail("a description past its bound");
    const QString url = trailer.mediaURL();
    if (!url.endsWith(QLatin1String("x.flv")))
        fail("a trailer URL without x.flv");
    if (!isWebUrl(url))
        fail("a trailer URL that is not on the web");
    const QString thumbnailName
        = QLatin1String("vtv_ca_") + trailer.vireoContentId() + QLatin1String(".jpg");
    if (!trailer.previewURL().endsWith(thumbnailName))
        fail("a thumbnail that does not name its trailer");
    if (trailer.previewURL() != thumbnailName && !isWebUrl(trailer.previewURL()))
        fail("a thumbnail that is not on the web");
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
