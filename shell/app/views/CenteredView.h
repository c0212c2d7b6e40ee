#pragma once

#include "TextStyleView.h"

#include <QObject>
#include <QString>
#include <QtQmlIntegration/qqmlintegration.h>

namespace shell {
class LayerController;
}

namespace mediashell {

// A centred menu's title and its primary and secondary texts in their styles (the
// answers are the menu view's rows).
class CenteredView : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The shell view makes its centred-menu view.")
    Q_PROPERTY(QString title READ title NOTIFY changed)
    Q_PROPERTY(QString primaryText READ primaryText NOTIFY changed)
    Q_PROPERTY(mediashell::TextStyleView primaryStyle READ primaryStyle NOTIFY changed)
    Q_PROPERTY(QString secondaryText READ secondaryText NOTIFY changed)
    Q_PROPERTY(mediashell::TextStyleView secondaryStyle READ secondaryStyle NOTIFY changed)
public:
    explicit CenteredView(QObject* parent = nullptr);
    ~CenteredView() override;

    // Reads `top` again, if it is a centred menu.
    void update(shell::LayerController* top);

    QString title() const { return m_state.title; }
    QString primaryText() const { return m_state.primaryText; }
    TextStyleView primaryStyle() const { return m_state.primaryStyle; }
    QString secondaryText() const { return m_state.secondaryText; }
    TextStyleView secondaryStyle() const { return m_state.secondaryStyle; }

signals:
    void changed();

private:
    struct State {
        QString title;
        QString primaryText;
        TextStyleView primaryStyle;
        QString secondaryText;
        TextStyleView secondaryStyle;
        bool operator==(const State&) const = default;
    };

    State m_state;
};

} // namespace mediashell
