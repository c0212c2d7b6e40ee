#pragma once

#include "TextStyleView.h"

#include "toolkit/scene/Scene.h"
#include "toolkit/scene/Theme.h"

#include <QColor>
#include <QObject>
#include <QRectF>
#include <QtQmlIntegration/qqmlintegration.h>

namespace mediashell {

// The toolkit's Theme as QML reads it, one constant property per value: the scene's
// size, the styles of every text, and the colours and sizes of the front end's
// furniture. Frames are in view units (SceneMapping). QML takes no colour or size from
// anywhere else.
class ThemeView : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(qreal sceneWidth READ sceneWidth CONSTANT)
    Q_PROPERTY(qreal sceneHeight READ sceneHeight CONSTANT)
    Q_PROPERTY(qreal rowHeight READ rowHeight CONSTANT)
    Q_PROPERTY(QRectF titleSafeFrame READ titleSafeFrame CONSTANT)
    Q_PROPERTY(mediashell::TextStyleView listStyle READ listStyle CONSTANT)
    Q_PROPERTY(mediashell::TextStyleView listArrowStyle READ listArrowStyle CONSTANT)
    Q_PROPERTY(mediashell::TextStyleView headerStyle READ headerStyle CONSTANT)
    Q_PROPERTY(mediashell::TextStyleView previewTitleStyle READ previewTitleStyle CONSTANT)
    Q_PROPERTY(mediashell::TextStyleView previewBodyStyle READ previewBodyStyle CONSTANT)
    Q_PROPERTY(mediashell::TextStyleView previewLabelStyle READ previewLabelStyle CONSTANT)
    Q_PROPERTY(mediashell::TextStyleView previewValueStyle READ previewValueStyle CONSTANT)
    Q_PROPERTY(mediashell::TextStyleView previewCopyrightStyle READ previewCopyrightStyle CONSTANT)
    Q_PROPERTY(mediashell::TextStyleView playerPositionStyle READ playerPositionStyle CONSTANT)
    Q_PROPERTY(mediashell::TextStyleView playerDurationStyle READ playerDurationStyle CONSTANT)
    Q_PROPERTY(mediashell::TextStyleView playerMessageStyle READ playerMessageStyle CONSTANT)
    Q_PROPERTY(mediashell::TextStyleView screensaverClockStyle READ screensaverClockStyle CONSTANT)
    Q_PROPERTY(QColor backdrop READ backdrop CONSTANT)
    Q_PROPERTY(QColor backdropGlow READ backdropGlow CONSTANT)
    Q_PROPERTY(QColor focusTop READ focusTop CONSTANT)
    Q_PROPERTY(QColor focusBottom READ focusBottom CONSTANT)
    Q_PROPERTY(QColor focusBorder READ focusBorder CONSTANT)
    Q_PROPERTY(QColor focusedText READ focusedText CONSTANT)
    Q_PROPERTY(QColor rowText READ rowText CONSTANT)
    Q_PROPERTY(QColor divider READ divider CONSTANT)
    Q_PROPERTY(QColor promptRow READ promptRow CONSTANT)
    Q_PROPERTY(QColor promptFocusedRow READ promptFocusedRow CONSTANT)
    Q_PROPERTY(QColor promptBorder READ promptBorder CONSTANT)
    Q_PROPERTY(QColor promptText READ promptText CONSTANT)
    Q_PROPERTY(QColor progressPanel READ progressPanel CONSTANT)
    Q_PROPERTY(QColor progressTrack READ progressTrack CONSTANT)
    Q_PROPERTY(QColor progressFill READ progressFill CONSTANT)
    Q_PROPERTY(QColor screensaverShade READ screensaverShade CONSTANT)
    Q_PROPERTY(qreal cornerRadius READ cornerRadius CONSTANT)
    Q_PROPERTY(qreal lineWidth READ lineWidth CONSTANT)
    Q_PROPERTY(qreal rowInset READ rowInset CONSTANT)
    Q_PROPERTY(qreal rowIconInset READ rowIconInset CONSTANT)
    Q_PROPERTY(qreal rowTextInset READ rowTextInset CONSTANT)
    Q_PROPERTY(qreal rowArrowInset READ rowArrowInset CONSTANT)
    Q_PROPERTY(qreal listTitleGap READ listTitleGap CONSTANT)
    Q_PROPERTY(qreal centeredTitleGap READ centeredTitleGap CONSTANT)
    Q_PROPERTY(qreal centeredTextSpacing READ centeredTextSpacing CONSTANT)
    Q_PROPERTY(qreal previewFactsGap READ previewFactsGap CONSTANT)
    Q_PROPERTY(qreal previewFactsSpacing READ previewFactsSpacing CONSTANT)
    Q_PROPERTY(qreal previewLabelGap READ previewLabelGap CONSTANT)
    Q_PROPERTY(qreal promptWidth READ promptWidth CONSTANT)
    Q_PROPERTY(qreal promptSpacing READ promptSpacing CONSTANT)
    Q_PROPERTY(qreal progressBottom READ progressBottom CONSTANT)
    Q_PROPERTY(qreal progressHeight READ progressHeight CONSTANT)
    Q_PROPERTY(qreal progressPadding READ progressPadding CONSTANT)
    Q_PROPERTY(qreal progressRadius READ progressRadius CONSTANT)
    Q_PROPERTY(qreal progressTrackHeight READ progressTrackHeight CONSTANT)
    Q_PROPERTY(qreal screensaverCoverHeight READ screensaverCoverHeight CONSTANT)
public:
    explicit ThemeView(QObject* parent = nullptr);
    ~ThemeView() override;

    qreal sceneWidth() const { return shell::Scene::kWidth; }
    qreal sceneHeight() const { return shell::Scene::kHeight; }
    qreal rowHeight() const { return theme().listRowHeight(); }
    QRectF titleSafeFrame() const;

    TextStyleView listStyle() const { return TextStyleView(theme().listStyle()); }
    TextStyleView listArrowStyle() const { return TextStyleView(theme().listArrowStyle()); }
    TextStyleView headerStyle() const { return TextStyleView(theme().headerStyle()); }
    TextStyleView previewTitleStyle() const { return TextStyleView(theme().previewTitleStyle()); }
    TextStyleView previewBodyStyle() const { return TextStyleView(theme().previewBodyStyle()); }
    TextStyleView previewLabelStyle() const { return TextStyleView(theme().previewLabelStyle()); }
    TextStyleView previewValueStyle() const { return TextStyleView(theme().previewValueStyle()); }
    TextStyleView previewCopyrightStyle() const
    {
        return TextStyleView(theme().previewCopyrightStyle());
    }
    TextStyleView playerPositionStyle() const
    {
        return TextStyleView(theme().playerPositionStyle());
    }
    TextStyleView playerDurationStyle() const
    {
        return TextStyleView(theme().playerDurationStyle());
    }
    TextStyleView playerMessageStyle() const { return TextStyleView(theme().playerMessageStyle()); }
    TextStyleView screensaverClockStyle() const
    {
        return TextStyleView(theme().screensaverClockStyle());
    }
    QColor backdrop() const { return theme().palette().backdrop; }
    QColor backdropGlow() const { return theme().palette().backdropGlow; }
    QColor focusTop() const { return theme().palette().focusTop; }
    QColor focusBottom() const { return theme().palette().focusBottom; }
    QColor focusBorder() const { return theme().palette().focusBorder; }
    QColor focusedText() const { return theme().palette().focusedText; }
    QColor rowText() const { return theme().palette().rowText; }
    QColor divider() const { return theme().palette().divider; }
    QColor promptRow() const { return theme().palette().promptRow; }
    QColor promptFocusedRow() const { return theme().palette().promptFocusedRow; }
    QColor promptBorder() const { return theme().palette().promptBorder; }
    QColor promptText() const { return theme().palette().promptText; }
    QColor progressPanel() const { return theme().palette().progressPanel; }
    QColor progressTrack() const { return theme().palette().progressTrack; }
    QColor progressFill() const { return theme().palette().progressFill; }
    QColor screensaverShade() const { return theme().palette().screensaverShade; }
    qreal cornerRadius() const { return theme().metrics().cornerRadius; }
    qreal lineWidth() const { return theme().metrics().lineWidth; }
    qreal rowInset() const { return theme().metrics().rowInset; }
    qreal rowIconInset() const { return theme().metrics().rowIconInset; }
    qreal rowTextInset() const { return theme().metrics().rowTextInset; }
    qreal rowArrowInset() const { return theme().metrics().rowArrowInset; }
    qreal listTitleGap() const { return theme().metrics().listTitleGap; }
    qreal centeredTitleGap() const { return theme().metrics().centeredTitleGap; }
    qreal centeredTextSpacing() const { return theme().metrics().centeredTextSpacing; }
    qreal previewFactsGap() const { return theme().metrics().previewFactsGap; }
    qreal previewFactsSpacing() const { return theme().metrics().previewFactsSpacing; }
    qreal previewLabelGap() const { return theme().metrics().previewLabelGap; }
    qreal promptWidth() const { return theme().metrics().promptWidth; }
    qreal promptSpacing() const { return theme().metrics().promptSpacing; }
    qreal progressBottom() const { return theme().metrics().progressBottom; }
    qreal progressHeight() const { return theme().metrics().progressHeight; }
    qreal progressPadding() const { return theme().metrics().progressPadding; }
    qreal progressRadius() const { return theme().metrics().progressRadius; }
    qreal progressTrackHeight() const { return theme().metrics().progressTrackHeight; }
    qreal screensaverCoverHeight() const { return theme().metrics().screensaverCoverHeight; }

private:
    static const shell::Theme& theme() { return shell::Theme::shared(); }
};

} // namespace mediashell
