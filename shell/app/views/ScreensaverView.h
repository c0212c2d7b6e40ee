#pragma once

#include <QJsonObject>
#include <QObject>
#include <QPointF>
#include <QString>
#include <QTimer>
#include <QtQmlIntegration/qqmlintegration.h>

namespace mediashell {

class PreviewView;

// What the dimmed shell shows: the focused row's cover when it has one, else the
// clock, drifting slowly over the screen so that nothing stays burnt into it. The
// shell says when it dims; the view follows the preview for the cover.
class ScreensaverView : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The shell view makes its screensaver view.")
    Q_PROPERTY(bool dimmed READ dimmed NOTIFY changed)
    // Empty: the clock is shown.
    Q_PROPERTY(QString coverUrl READ coverUrl NOTIFY changed)
    Q_PROPERTY(QString clockText READ clockText NOTIFY changed)
    // Where the cover or clock stands: 0 to 1 across the room it has, each way.
    Q_PROPERTY(QPointF drift READ drift NOTIFY changed)
public:
    // How often the clock is read and the picture moves on, by how much at most.
    static constexpr int kTickMS = 1000;
    static constexpr qreal kDriftPerTick = 0.004;

    explicit ScreensaverView(QObject* parent = nullptr);
    ~ScreensaverView() override;

    void setDimmed(bool dimmed);
    // Takes the cover of the focused row's preview: a picture of the movie's own (a
    // file beside it or an address), not an icon and not one of the program's
    // resources.
    void follow(const PreviewView& preview);

    bool dimmed() const { return m_dimmed; }
    QString coverUrl() const { return m_dimmed ? m_cover : QString(); }
    QString clockText() const { return m_dimmed ? m_clock : QString(); }
    QPointF drift() const { return m_drift; }

    // {"dimmed": true/false, "shows": "clock", "cover" or null while awake}.
    QJsonObject describe() const;

signals:
    void changed();

private:
    void tick();

    bool m_dimmed = false;
    QString m_cover;
    QString m_clock;
    QPointF m_drift { 0.5, 0.5 };
    QPointF m_step { kDriftPerTick, kDriftPerTick * 0.75 };
    QTimer m_ticks;
};

} // namespace mediashell
