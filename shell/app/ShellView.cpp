#include "ShellView.h"

#include "ImageFileProvider.h"
#include "ImageStore.h"
#include "ImageUrlProvider.h"
#include "SceneMapping.h"
#include "video/MpvVideoPlayer.h"

#include "toolkit/media/MediaPreviewController.h"
#include "toolkit/menus/CenteredMenuController.h"
#include "toolkit/menus/MediaMenuController.h"
#include "toolkit/menus/MenuController.h"
#include "toolkit/player/VideoPlayerController.h"
#include "toolkit/scene/HeaderControl.h"
#include "toolkit/scene/ImageControl.h"
#include "toolkit/scene/Scene.h"
#include "toolkit/scene/TextControl.h"
#include "toolkit/scene/Theme.h"
#include "toolkit/stack/ControllerStack.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

namespace mediashell {

namespace {

    // The gap between a media menu's preview and its list, in scene units.
    constexpr qreal kPreviewGap = 40;

    QString playerStateName(shell::VideoPlayerController::State state)
    {
        using State = shell::VideoPlayerController::State;
        switch (state) {
        case State::Idle:
            return QStringLiteral("idle");
        case State::Prompt:
            return QStringLiteral("prompt");
        case State::Playing:
            return QStringLiteral("playing");
        case State::Paused:
            return QStringLiteral("paused");
        case State::Ended:
            return QStringLiteral("ended");
        case State::Error:
            return QStringLiteral("error");
        }
        return {};
    }

    QString joined(const QJsonValue& list)
    {
        QStringList items;
        for (const QJsonValue& item : list.toArray())
            items.append(item.toString());
        return items.join(QStringLiteral(", "));
    }

} // namespace

ShellView::ShellView(std::shared_ptr<ImageStore> images, QObject* parent)
    : QObject(parent)
    , m_images(std::move(images))
    , m_rows(new RowsModel(m_images, this))
{
    m_seekBarTimer.setSingleShot(true);
    connect(&m_seekBarTimer, &QTimer::timeout, this, &ShellView::refresh);
}

ShellView::~ShellView()
{
    if (m_images)
        m_images->removeGroup(imageGroup());
}

void ShellView::setStack(shell::ControllerStack* stack)
{
    if (m_stack)
        disconnect(m_stack, nullptr, this, nullptr);
    m_stack = stack;
    if (stack)
        connect(stack, &shell::ControllerStack::changed, this, &ShellView::refresh);
    refresh();
}

void ShellView::setScene(shell::Scene* scene)
{
    if (m_scene)
        disconnect(m_scene, nullptr, this, nullptr);
    m_scene = scene;
    if (scene)
        connect(scene, &shell::Scene::redrawRequested, this, &ShellView::refresh);
}

QString ShellView::imageGroup() const
{
    return QStringLiteral("view%1-%2").arg(quintptr(this)).arg(m_serial);
}

qreal ShellView::rowHeight() const
{
    return shell::Theme::shared().listRowHeight();
}

QVariantMap ShellView::listStyle() const
{
    return styleMap(shell::Theme::shared().listStyle());
}

QVariantMap ShellView::headerStyle() const
{
    return styleMap(shell::Theme::shared().headerStyle());
}

QRectF ShellView::titleSafeFrame() const
{
    return SceneMapping::toView(shell::Theme::shared().titleSafeFrame());
}

QVariantMap ShellView::styleMap(const shell::TextStyle& style)
{
    return {
        { QStringLiteral("family"), style.family },
        { QStringLiteral("pixelSize"), style.pixelSize },
        { QStringLiteral("weight"), int(style.weight) },
        { QStringLiteral("color"), style.color },
    };
}

QString ShellView::formatTime(qint64 ms)
{
    const qint64 seconds = std::max<qint64>(0, ms) / 1000;
    const qint64 h = seconds / 3600;
    const qint64 m = (seconds / 60) % 60;
    const qint64 s = seconds % 60;
    if (h > 0)
        return QStringLiteral("%1:%2:%3")
            .arg(h)
            .arg(m, 2, 10, QLatin1Char('0'))
            .arg(s, 2, 10, QLatin1Char('0'));
    return QStringLiteral("%1:%2").arg(m).arg(s, 2, 10, QLatin1Char('0'));
}

QString ShellView::formatDuration(int seconds)
{
    if (seconds <= 0)
        return {};
    if (seconds < 60)
        return tr("%1 s").arg(seconds);
    const int minutes = (seconds + 30) / 60;
    const int h = minutes / 60;
    const int m = minutes % 60;
    if (h == 0)
        return tr("%1 min").arg(m);
    if (m == 0)
        return tr("%1 h").arg(h);
    return tr("%1 h %2 min").arg(h).arg(m);
}

QString ShellView::imageUrl(const QString& described)
{
    if (described.isEmpty())
        return {};
    if (described.startsWith(QLatin1String(":/")))
        return QStringLiteral("qrc") + described;
    if (QFileInfo(described).isAbsolute())
        return ImageFileProvider::urlFor(described);
    return ImageUrlProvider::urlFor(described);
}

void ShellView::refresh()
{
    shell::LayerController* const top = m_stack ? m_stack->topController() : nullptr;

    // The screen: a new top controller starts afresh (even at a reused address).
    const bool newScreen = top != m_top.data() || (top && !m_top) || (!top && m_topAddress);
    if (newScreen) {
        if (m_images)
            m_images->removeGroup(imageGroup());
        m_controlImages.clear();
        m_previewSource = nullptr;
        ++m_serial;
        m_top = top;
        m_topAddress = top;
    }
    const QString kind = top ? top->kind() : QString();
    const QString label = top ? top->label() : QString();
    const int depth = m_stack ? m_stack->count() : 0;
    const bool screenDiffers = newScreen || kind != m_kind || label != m_label || depth != m_depth;
    m_kind = kind;
    m_label = label;
    m_depth = depth;

    // The list, its focus and frames.
    auto* const menu = qobject_cast<shell::MenuController*>(top);
    const bool reset = m_rows->setMenu(menu);
    MenuState menuState;
    if (menu) {
        menuState.focus = int(std::min<long>(menu->focusedRow(), INT_MAX));
        menuState.title = menu->list().title();
        const QRectF list = menu->list().frame();
        menuState.frame = SceneMapping::toView(list);
        const QRectF safe = shell::Theme::shared().titleSafeFrame();
        const qreal previewWidth = std::max<qreal>(0, list.x() - safe.x() - kPreviewGap);
        menuState.previewFrame
            = SceneMapping::toView(QRectF(safe.x(), safe.y(), previewWidth, safe.height()));
    }
    const bool menuDiffers = reset || !(menuState == m_menu);
    const bool jumped = reset || newScreen || std::abs(menuState.focus - m_menu.focus) > 1;
    const bool jumpDiffers = menuDiffers && jumped != m_focusJumped;
    if (menuDiffers)
        m_focusJumped = jumped;
    m_menu = menuState;

    // The preview, read again only when the menu made a new one.
    auto* const media = qobject_cast<shell::MediaMenuController*>(top);
    const void* const previewSource = media ? media->preview() : nullptr;
    bool previewDiffers = false;
    if (newScreen || previewSource != m_previewSource) {
        m_previewSource = previewSource;
        // The cover the last preview put in the store is no longer shown.
        if (m_images && !m_previewImage.isEmpty())
            m_images->remove(m_previewImage);
        m_previewImage.clear();
        const QVariantMap preview = readPreview(top);
        previewDiffers = preview != m_preview;
        m_preview = preview;
    }

    // A centred menu's texts.
    CenteredState centered;
    if (auto* const question = qobject_cast<shell::CenteredMenuController*>(top)) {
        centered.title = question->title();
        centered.primary = question->primaryInfoText();
        centered.secondary = question->secondaryInfoText();
        centered.primaryStyle = styleMap(question->primaryInfoStyle());
        centered.secondaryStyle = styleMap(question->secondaryInfoStyle());
    }
    const bool centeredDiffers = !(centered == m_centered);
    m_centered = centered;

    const QVariantList controls = readControls(top);
    const bool controlsDiffer = controls != m_controls;
    m_controls = controls;

    const PlayerState player = readPlayer(top);
    const bool playerDiffers = !(player == m_player);
    m_player = player;

    if (screenDiffers)
        emit screenChanged();
    if (jumpDiffers)
        emit focusJumpedChanged();
    if (menuDiffers)
        emit menuChanged();
    if (previewDiffers)
        emit previewChanged();
    if (centeredDiffers)
        emit centeredChanged();
    if (controlsDiffer)
        emit controlsChanged();
    if (playerDiffers)
        emit playerChanged();
}

QVariantMap ShellView::readPreview(shell::LayerController* top)
{
    auto* const media = qobject_cast<shell::MediaMenuController*>(top);
    const shell::PreviewController* const preview = media ? media->preview() : nullptr;
    if (!preview)
        return {};
    const QJsonObject described = preview->describe();
    QString image = imageUrl(described.value(u"image").toString());
    bool isIcon = false;
    if (image.isEmpty() && preview->asset()) {
        // No file or URL: the cover the asset draws itself, or its type's picture.
        image = m_images ? m_images->add(imageGroup(), preview->asset()->coverArt()) : QString();
        m_previewImage = image;
        isIcon = true;
    }
    bool showsMetadata = true;
    if (const auto* mediaPreview = dynamic_cast<const shell::MediaPreviewController*>(preview))
        showsMetadata = mediaPreview->showsMetadata();
    return {
        { QStringLiteral("kind"), described.value(u"kind").toString() },
        { QStringLiteral("title"), described.value(u"title").toString() },
        { QStringLiteral("description"), described.value(u"description").toString() },
        { QStringLiteral("cast"), joined(described.value(u"cast")) },
        { QStringLiteral("directors"), joined(described.value(u"directors")) },
        { QStringLiteral("producers"), joined(described.value(u"producers")) },
        { QStringLiteral("duration"), formatDuration(described.value(u"duration").toInt()) },
        { QStringLiteral("copyright"), described.value(u"copyright").toString() },
        { QStringLiteral("image"), image },
        { QStringLiteral("imageIsIcon"), isIcon },
        { QStringLiteral("showsMetadata"), showsMetadata },
    };
}

QVariantList ShellView::readControls(shell::LayerController* top)
{
    QVariantList controls;
    if (!top)
        return controls;
    for (const auto& control : top->controls())
        controls.append(readControl(*control));
    return controls;
}

QVariantMap ShellView::readControl(const shell::Control& control)
{
    const QRectF frame = SceneMapping::toView(control.frame());
    QVariantMap map {
        { QStringLiteral("kind"), control.kindName() },
        { QStringLiteral("x"), frame.x() },
        { QStringLiteral("y"), frame.y() },
        { QStringLiteral("width"), frame.width() },
        { QStringLiteral("height"), frame.height() },
        { QStringLiteral("text"), control.text() },
    };
    switch (control.kind()) {
    case shell::Control::Kind::Header:
        map.insert(QStringLiteral("style"), headerStyle());
        map.insert(QStringLiteral("maximumLines"), 1);
        break;
    case shell::Control::Kind::Text: {
        const auto& text = static_cast<const shell::TextControl&>(control);
        map.insert(QStringLiteral("style"), styleMap(text.style()));
        // No frame width yet means one line at its natural width.
        map.insert(QStringLiteral("maximumLines"), frame.width() <= 0 ? 1 : text.maximumLines());
        break;
    }
    case shell::Control::Kind::Image: {
        const auto& image = static_cast<const shell::ImageControl&>(control);
        const QImage picture = image.image();
        auto known = m_controlImages.constFind(&control);
        QString url;
        if (known != m_controlImages.constEnd() && known->first == picture.cacheKey()) {
            url = known->second;
        } else {
            if (known != m_controlImages.constEnd() && m_images)
                m_images->remove(known->second);
            url = m_images ? m_images->add(imageGroup(), picture) : QString();
            m_controlImages.insert(&control, { picture.cacheKey(), url });
        }
        map.insert(QStringLiteral("image"), url);
        map.insert(QStringLiteral("reflection"), image.reflectionAmount());
        map.insert(QStringLiteral("reflectionOffset"), image.reflectionOffset());
        break;
    }
    }
    return map;
}

ShellView::PlayerState ShellView::readPlayer(shell::LayerController* top) const
{
    PlayerState player;
    auto* const controller = qobject_cast<shell::VideoPlayerController*>(top);
    if (!controller)
        return player;
    using State = shell::VideoPlayerController::State;
    const State state = controller->state();
    player.videoPlayer = controller->videoPlayer();
    player.hasVideo = qobject_cast<MpvVideoPlayer*>(controller->videoPlayer()) != nullptr;
    player.state = playerStateName(state);
    if (const shell::VideoPlayer* video = controller->videoPlayer()) {
        player.positionMS = video->positionMS();
        player.durationMS = video->durationMS();
    }
    if (state == State::Prompt) {
        // Two rows, the controller's own words.
        const QJsonObject described = controller->describe();
        for (const QJsonValue& row : described.value(u"rows").toArray())
            player.promptRows.append(row.toObject().value(u"title").toString());
        player.promptFocus = described.value(u"focus").toInt(-1);
    }
    player.error = state == State::Error ? controller->errorText() : QString();
    player.showsProgress = state == State::Paused
        || (state == State::Playing && !m_seekBarUntil.hasExpired() && m_seekBarTimer.isActive());
    return player;
}

void ShellView::actionHandled(shell::RemoteAction action)
{
    auto* const controller
        = qobject_cast<shell::VideoPlayerController*>(m_stack ? m_stack->topController() : nullptr);
    using State = shell::VideoPlayerController::State;
    const bool seek = action == shell::RemoteAction::Left || action == shell::RemoteAction::Right
        || action == shell::RemoteAction::Up || action == shell::RemoteAction::Down;
    if (controller && seek
        && (controller->state() == State::Playing || controller->state() == State::Paused)) {
        m_seekBarUntil = QDeadlineTimer(kSeekBarMS);
        m_seekBarTimer.start(kSeekBarMS);
    }
    refresh();
}

} // namespace mediashell
