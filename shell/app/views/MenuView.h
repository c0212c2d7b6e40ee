#pragma once

#include "RowsModel.h"
#include "TextStyleView.h"

#include <QObject>
#include <QRectF>
#include <QString>
#include <QtQmlIntegration/qqmlintegration.h>

#include <memory>

namespace shell {
class LayerController;
}

namespace mediashell {

class ImageStore;

// The list of the menu on top (a media menu or a centred menu): its rows, focus, title
// and frame, and where a media menu's preview stands. Frames are in view units.
class MenuView : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The shell view makes its menu view.")
    Q_PROPERTY(mediashell::RowsModel* rows READ rows CONSTANT)
    Q_PROPERTY(int focusedRow READ focusedRow NOTIFY changed)
    // Whether the focus last moved by more than one row (or onto a new list): the
    // list jumps there instead of gliding past every row between.
    Q_PROPERTY(bool focusJumped READ focusJumped NOTIFY focusJumpedChanged)
    Q_PROPERTY(QString title READ title NOTIFY changed)
    Q_PROPERTY(QRectF listFrame READ listFrame NOTIFY changed)
    // The style the rows' titles are set in (a centred menu may set them smaller).
    Q_PROPERTY(mediashell::TextStyleView rowStyle READ rowStyle NOTIFY changed)
    Q_PROPERTY(QRectF previewFrame READ previewFrame NOTIFY changed)
public:
    // Without `images`, rows have no icons.
    explicit MenuView(std::shared_ptr<ImageStore> images, QObject* parent = nullptr);
    ~MenuView() override;

    // Reads `top` again, if it is a menu; `newScreen` when it was not on top before.
    void update(shell::LayerController* top, bool newScreen);

    RowsModel* rows() const { return m_rows; }
    int focusedRow() const { return m_state.focus; }
    bool focusJumped() const { return m_focusJumped; }
    QString title() const { return m_state.title; }
    QRectF listFrame() const { return m_state.listFrame; }
    TextStyleView rowStyle() const { return m_state.rowStyle; }
    QRectF previewFrame() const { return m_state.previewFrame; }

signals:
    // Comes before changed(), so the list knows how to move before it moves.
    void focusJumpedChanged();
    void changed();

private:
    struct State {
        int focus = -1;
        QString title;
        QRectF listFrame;
        TextStyleView rowStyle;
        QRectF previewFrame;
        bool operator==(const State&) const = default;
    };

    RowsModel* m_rows;
    State m_state;
    bool m_focusJumped = true;
};

} // namespace mediashell
