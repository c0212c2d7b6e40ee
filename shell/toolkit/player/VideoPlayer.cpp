#include "toolkit/player/VideoPlayer.h"

namespace shell {

VideoPlayer::VideoPlayer(QObject* parent)
    : QObject(parent)
{
}

VideoPlayer::~VideoPlayer() = default;

QString VideoPlayer::errorString() const
{
    return {};
}

} // namespace shell
