#pragma once

#include <QObject>
#include <QRectF>

namespace shell {

// The coordinate space every controller lays itself out in: 1280 x 720 units with the
// origin at the bottom left, so a larger y is higher on the screen. The front end
// scales it to the window and flips it in one place.
class Scene : public QObject {
    Q_OBJECT
public:
    static constexpr qreal kWidth = 1280;
    static constexpr qreal kHeight = 720;

    explicit Scene(QObject* parent = nullptr);
    ~Scene() override;

    // The master layer's frame: the whole scene.
    QRectF frame() const { return QRectF(0, 0, kWidth, kHeight); }

    // Asks the front end to draw the scene again (controls changed in place).
    void redraw();
    int redrawCount() const { return m_redrawCount; }

signals:
    void redrawRequested();

private:
    int m_redrawCount = 0;
};

} // namespace shell
