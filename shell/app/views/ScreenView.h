#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QtQmlIntegration/qqmlintegration.h>

namespace shell {
class LayerController;
}

namespace mediashell {

// Which controller is on top: its kind (what QML draws for it), its label, how deep
// the stack is, and a serial that counts the screens shown (a new top controller is a
// new screen even at a reused address).
class ScreenView : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The shell view makes its screen view.")
    Q_PROPERTY(Kind kind READ kind NOTIFY changed)
    Q_PROPERTY(QString label READ label NOTIFY changed)
    Q_PROPERTY(int serial READ serial NOTIFY changed)
    Q_PROPERTY(int depth READ depth NOTIFY changed)
public:
    enum class Kind { None, Menu, Centered, Layer, Player };
    Q_ENUM(Kind)

    explicit ScreenView(QObject* parent = nullptr);
    ~ScreenView() override;

    // Follows `top` (null: no screen) on a stack `depth` deep; true when `top` is
    // another controller than the one shown so far.
    bool update(shell::LayerController* top, int depth);

    Kind kind() const { return m_kind; }
    QString label() const { return m_label; }
    int serial() const { return m_serial; }
    int depth() const { return m_depth; }

signals:
    void changed();

private:
    QPointer<shell::LayerController> m_top;
    const void* m_topAddress = nullptr;
    Kind m_kind = Kind::None;
    QString m_label;
    int m_serial = 0;
    int m_depth = 0;
};

} // namespace mediashell
