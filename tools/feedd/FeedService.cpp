#include "FeedService.h"

#include "FeedCall.h"
#include "VideoListPayload.h"
#include "XmlRpcReply.h"

#include "vtvplugin/trailers/TrailerCredentials.h"

namespace {

// Few lists, offsets and host names are ever asked for; a client cycling through
// many of them only empties the store now and then.
constexpr qsizetype kMaxKeptReplies = 64;

} // namespace

FeedService::FeedService(std::shared_ptr<const Catalogue> catalogue)
    : m_catalogue(std::move(catalogue))
    , m_apiKey(TrailerCredentials::apiKey())
    , m_secret(TrailerCredentials::signingSecret())
{
}

QByteArray FeedService::answer(const QByteArray& body, const QString& base)
{
    const auto outcome = FeedCall::read(body, m_apiKey, m_secret);
    if (const auto* fault = std::get_if<FeedCall::Fault>(&outcome))
        return XmlRpcReply::fault(fault->code, fault->text);
    const FeedCall& call = std::get<FeedCall>(outcome);
    const QString key
        = QStringLiteral("%1 %2 %3 ").arg(call.type()).arg(call.offset()).arg(call.limit()) + base;
    const auto kept = m_replies.constFind(key);
    if (kept != m_replies.constEnd())
        return *kept;
    if (m_replies.size() >= kMaxKeptReplies)
        m_replies.clear();
    const QByteArray reply = XmlRpcReply::string(
        VideoListPayload::write(*m_catalogue, call.type(), call.offset(), call.limit(), base));
    m_replies.insert(key, reply);
    return reply;
}
