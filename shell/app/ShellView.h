#pragma once

#include "RowsModel.h"

#include "toolkit/stack/RemoteAction.h"

#include <QDeadlineTimer>
#include <QHash>
#include <QObject>
#include <QPointer>
#include <QRectF>
#include <QStringList>
#include <QTimer>
#include <QVariantList>
#include <QVariantMap>

#include <memory>

namespace shell {
class Control;
class ControllerStack;
class LayerController;
class Scene;
struct TextStyle;
}

namespace mediashell {

class ImageStore;

// What QML shows of the controller stack: the top controller's state, read through
// the toolkit's own accessors whenever the stack or the scene says something changed.
// Frames are in view units (SceneMapping); QML only places and styles what it gets.
// A menu's rows come from `rows`, a model that asks the data source for the rows on
// screen only.
class ShellView : public QObject {
    Q_OBJECT
    // The top controller.
    Q_PROPERTY(QString screenKind READ screenKind NOTIFY screenChanged)
    Q_PROPERTY(QString label READ label NOTIFY screenChanged)
    Q_PROPERTY(int screenSerial READ screenSerial NOTIFY screenChanged)
    Q_PROPERTY(int depth READ depth NOTIFY screenChanged)
    // Menus and centred menus.
    Q_PROPERTY(QObject* rows READ rows CONSTANT)
    Q_PROPERTY(int focusedRow READ focusedRow NOTIFY menuChanged)
    // Whether the focus last moved by more than one row (or onto a new list): the
    // view jumps there instead of gliding past every row between.
    Q_PROPERTY(bool focusJumped READ focusJumped NOTIFY focusJumpedChanged)
    Q_PROPERTY(QString listTitle READ listTitle NOTIFY menuChanged)
    Q_PROPERTY(QRectF listFrame READ listFrame NOTIFY menuChanged)
    Q_PROPERTY(QRectF previewFrame READ previewFrame NOTIFY menuChanged)
    Q_PROPERTY(qreal rowHeight READ rowHeight CONSTANT)
    Q_PROPERTY(QVariantMap listStyle READ listStyle CONSTANT)
    Q_PROPERTY(QVariantMap headerStyle READ headerStyle CONSTANT)
    Q_PROPERTY(QRectF titleSafeFrame READ titleSafeFrame CONSTANT)
    Q_PROPERTY(QVariantMap preview READ preview NOTIFY previewChanged)
    Q_PROPERTY(QString centeredTitle READ centeredTitle NOTIFY centeredChanged)
    Q_PROPERTY(QString primaryText READ primaryText NOTIFY centeredChanged)
    Q_PROPERTY(QVariantMap primaryStyle READ primaryStyle NOTIFY centeredChanged)
    Q_PROPERTY(QString secondaryText READ secondaryText NOTIFY centeredChanged)
    Q_PROPERTY(QVariantMap secondaryStyle READ secondaryStyle NOTIFY centeredChanged)
    // Every controller's controls, in the order they are drawn.
    Q_PROPERTY(QVariantList controls READ controls NOTIFY controlsChanged)
    // The player.
    Q_PROPERTY(QObject* videoPlayer READ videoPlayer NOTIFY playerChanged)
    // Whether the player draws pictures (mpv); the simulated player has none.
    Q_PROPERTY(bool hasVideo READ hasVideo NOTIFY playerChanged)
    Q_PROPERTY(QString playerState READ playerState NOTIFY playerChanged)
    Q_PROPERTY(qint64 positionMS READ positionMS NOTIFY playerChanged)
    Q_PROPERTY(qint64 durationMS READ durationMS NOTIFY playerChanged)
    Q_PROPERTY(QString positionText READ positionText NOTIFY playerChanged)
    Q_PROPERTY(QString durationText READ durationText NOTIFY playerChanged)
    Q_PROPERTY(QStringList promptRows READ promptRows NOTIFY playerChanged)
    Q_PROPERTY(int promptFocus READ promptFocus NOTIFY playerChanged)
    Q_PROPERTY(QString playerError READ playerError NOTIFY playerChanged)
    Q_PROPERTY(bool showsProgress READ showsProgress NOTIFY playerChanged)
public:
    // How long the position bar stays after a seek while playing.
    static constexpr int kSeekBarMS = 2000;

    explicit ShellView(std::shared_ptr<ImageStore> images, QObject* parent = nullptr);
    ~ShellView() override;

    // Follows `stack` (null: shows nothing and lets go of every controller).
    void setStack(shell::ControllerStack* stack);
    void setScene(shell::Scene* scene);
    // Reads the top controller again.
    void refresh();
    // An action the stack has just handled: a seek shows the position bar a while.
    void actionHandled(shell::RemoteAction action);

    QString screenKind() const { return m_kind; }
    QString label() const { return m_label; }
    int screenSerial() const { return m_serial; }
    int depth() const { return m_depth; }

    RowsModel* rows() const { return m_rows; }
    int focusedRow() const { return m_menu.focus; }
    bool focusJumped() const { return m_focusJumped; }
    QString listTitle() const { return m_menu.title; }
    QRectF listFrame() const { return m_menu.frame; }
    QRectF previewFrame() const { return m_menu.previewFrame; }
    qreal rowHeight() const;
    QVariantMap listStyle() const;
    QVariantMap headerStyle() const;
    QRectF titleSafeFrame() const;
    QVariantMap preview() const { return m_preview; }

    QString centeredTitle() const { return m_centered.title; }
    QString primaryText() const { return m_centered.primary; }
    QVariantMap primaryStyle() const { return m_centered.primaryStyle; }
    QString secondaryText() const { return m_centered.secondary; }
    QVariantMap secondaryStyle() const { return m_centered.secondaryStyle; }

    QVariantList controls() const { return m_controls; }

    QObject* videoPlayer() const { return m_player.videoPlayer.data(); }
    bool hasVideo() const { return m_player.hasVideo; }
    QString playerState() const { return m_player.state; }
    qint64 positionMS() const { return m_player.positionMS; }
    qint64 durationMS() const { return m_player.durationMS; }
    QString positionText() const { return formatTime(m_player.positionMS); }
    QString durationText() const { return formatTime(m_player.durationMS); }
    QStringList promptRows() const { return m_player.promptRows; }
    int promptFocus() const { return m_player.promptFocus; }
    QString playerError() const { return m_player.error; }
    bool showsProgress() const { return m_player.showsProgress; }

    // "0:07", "12:34", "1:02:03".
    static QString formatTime(qint64 ms);
    // "1 h 42 min", "42 min", empty for 0.
    static QString formatDuration(int seconds);
    // A style as QML takes it: {family, pixelSize, weight, color}.
    static QVariantMap styleMap(const shell::TextStyle& style);
    // A preview's image for QML: a file path through ImageFileProvider (never QML's own
    // file loading), ":/..." as "qrc:/...", any other address through ImageUrlProvider
    // (never QML's own network access), which fetches only http and https.
    static QString imageUrl(const QString& describedImage);

signals:
    void screenChanged();
    // Comes before menuChanged, so the view knows how to move before it moves.
    void focusJumpedChanged();
    void menuChanged();
    void previewChanged();
    void centeredChanged();
    void controlsChanged();
    void playerChanged();

private:
    struct MenuState {
        int focus = -1;
        QString title;
        QRectF frame;
        QRectF previewFrame;
        bool operator==(const MenuState&) const = default;
    };
    struct CenteredState {
        QString title;
        QString primary;
        QString secondary;
        QVariantMap primaryStyle;
        QVariantMap secondaryStyle;
        bool operator==(const CenteredState&) const = default;
    };
    struct PlayerState {
        QPointer<QObject> videoPlayer;
        bool hasVideo = false;
        QString state;
        qint64 positionMS = 0;
        qint64 durationMS = 0;
        QStringList promptRows;
        int promptFocus = -1;
        QString error;
        bool showsProgress = false;
        bool operator==(const PlayerState& o) const
        {
            return videoPlayer == o.videoPlayer && hasVideo == o.hasVideo && state == o.state
                && positionMS == o.positionMS && durationMS == o.durationMS
                && promptRows == o.promptRows && promptFocus == o.promptFocus && error == o.error
                && showsProgress == o.showsProgress;
        }
    };

    QString imageGroup() const;
    QVariantMap readPreview(shell::LayerController* top);
    QVariantList readControls(shell::LayerController* top);
    QVariantMap readControl(const shell::Control& control);
    PlayerState readPlayer(shell::LayerController* top) const;

    std::shared_ptr<ImageStore> m_images;
    QPointer<shell::ControllerStack> m_stack;
    QPointer<shell::Scene> m_scene;
    RowsModel* m_rows;

    QPointer<shell::LayerController> m_top;
    const void* m_topAddress = nullptr;
    QString m_kind;
    QString m_label;
    int m_serial = 0;
    int m_depth = 0;
    MenuState m_menu;
    bool m_focusJumped = true;
    CenteredState m_centered;
    QVariantMap m_preview;
    const void* m_previewSource = nullptr;
    QString m_previewImage; // the store's URL of the preview's cover, if it made one
    QVariantList m_controls;
    // Image controls' URLs, kept while the image is the same.
    QHash<const shell::Control*, QPair<qint64, QString>> m_controlImages;
    PlayerState m_player;
    QDeadlineTimer m_seekBarUntil;
    QTimer m_seekBarTimer;
};

} // namespace mediashell
