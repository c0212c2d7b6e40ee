#include "PlayerView.h"

#include "video/MpvVideoPlayer.h"

#include "toolkit/player/VideoPlayerController.h"

#include <QJsonArray>
#include <QVariantMap>

#include <algorithm>

namespace mediashell {

namespace {

    PlayerView::State stateOf(shell::VideoPlayerController::State state)
    {
        using From = shell::VideoPlayerController::State;
        using To = PlayerView::State;
        switch (state) {
        case From::Idle:
            return To::Idle;
        case From::Prompt:
            return To::Prompt;
        case From::Playing:
            return To::Playing;
        case From::Paused:
            return To::Paused;
        case From::Ended:
            return To::Ended;
        case From::Error:
            return To::Error;
        }
        return To::None;
    }

} // namespace

PlayerView::PlayerView(QObject* parent)
    : QObject(parent)
{
}

PlayerView::~PlayerView() = default;

QJsonObject PlayerView::player() const
{
    return m_state.described.value(u"player").toObject();
}

QString PlayerView::text(const char* key) const
{
    return player().value(QLatin1String(key)).toString();
}

QString PlayerView::title() const
{
    return m_state.described.value(u"title").toString();
}

qreal PlayerView::progress() const
{
    const QJsonObject shown = player();
    const double duration = shown.value(u"durationMS").toDouble();
    if (duration <= 0)
        return 0;
    return std::clamp(shown.value(u"positionMS").toDouble() / duration, 0.0, 1.0);
}

bool PlayerView::showsProgress() const
{
    const QString overlay = text("overlay");
    return overlay == u"bar" || overlay == u"full";
}

QString PlayerView::remainingText() const
{
    const QString remaining = text("remaining");
    return remaining.isEmpty() ? remaining : QStringLiteral("-") + remaining;
}

QString PlayerView::endsAtText() const
{
    const QString endsAt = text("endsAt");
    return endsAt.isEmpty() ? endsAt : tr("Ends at %1").arg(endsAt);
}

QStringList PlayerView::promptRows() const
{
    QStringList rows;
    if (m_state.state == State::Prompt) {
        for (const QJsonValue& row : m_state.described.value(u"rows").toArray())
            rows.append(row.toObject().value(u"title").toString());
    }
    return rows;
}

int PlayerView::promptFocus() const
{
    return m_state.state == State::Prompt ? m_state.described.value(u"focus").toInt(-1) : -1;
}

QString PlayerView::promptText() const
{
    return m_state.state == State::Prompt ? m_state.described.value(u"primaryText").toString()
                                          : QString();
}

QVariantList PlayerView::trackRows() const
{
    QVariantList rows;
    QString group;
    for (const QJsonValue& value :
        player().value(u"trackMenu").toObject().value(u"rows").toArray()) {
        const QJsonObject row = value.toObject();
        const QString type = row.value(u"type").toString();
        rows.append(QVariantMap {
            { QStringLiteral("title"), row.value(u"title").toString() },
            { QStringLiteral("selected"), row.value(u"selected").toBool() },
            { QStringLiteral("heading"),
                type == group          ? QString()
                    : type == u"audio" ? tr("Audio")
                                       : tr("Subtitles") },
        });
        group = type;
    }
    return rows;
}

int PlayerView::trackFocus() const
{
    return player().value(u"trackMenu").toObject().value(u"focus").toInt(-1);
}

void PlayerView::update(shell::LayerController* top)
{
    const Shown shown = read(top);
    if (shown == m_state)
        return;
    m_state = shown;
    emit changed();
}

PlayerView::Shown PlayerView::read(shell::LayerController* top) const
{
    Shown shown;
    auto* const controller = qobject_cast<shell::VideoPlayerController*>(top);
    if (!controller)
        return shown;
    shown.videoPlayer = controller->videoPlayer();
    shown.hasVideo = qobject_cast<MpvVideoPlayer*>(controller->videoPlayer()) != nullptr;
    shown.state = stateOf(controller->state());
    shown.described = controller->describe();
    return shown;
}

} // namespace mediashell
