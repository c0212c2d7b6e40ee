// Prints the signed request body the trailer loader posts for list TYPE (0 to 3), for
// load tests of vireo-feedd.
#include "vtvplugin/trailers/TrailerCredentials.h"
#include "vtvplugin/trailers/TrailerRequest.h"
#include "vtvplugin/trailers/TrailerTypes.h"

#include <QByteArray>

#include <cstdio>

int main(int argc, char* argv[])
{
    const int type = argc > 1 ? QByteArray(argv[1]).toInt() : 0;
    if (argc > 2 || !TrailerTypes::isValid(type)) {
        std::fputs("usage: feed_request [TYPE 0..3]\n", stderr);
        return 2;
    }
    const QString method = TrailerTypes::methodName(type);
    const QString key = TrailerCredentials::apiKey();
    const QString signature = TrailerRequest::signature(
        method, TrailerRequest::loaderParameters(key), TrailerCredentials::signingSecret());
    const QByteArray body = TrailerRequest::body(method, key, signature);
    std::fwrite(body.constData(), 1, std::size_t(body.size()), stdout);
    return 0;
}
