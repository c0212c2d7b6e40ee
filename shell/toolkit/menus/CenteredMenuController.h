#pragma once

#include "toolkit/menus/MenuController.h"
#include "toolkit/scene/TextStyle.h"

namespace shell {

// A question in the middle of the screen: a title, a primary and a secondary text,
// and the list of answers below them.
class CenteredMenuController : public MenuController {
    Q_OBJECT
public:
    explicit CenteredMenuController(Scene& scene);
    ~CenteredMenuController() override;

    QString kind() const override; // "centered"

    void setTitle(const QString& title) { m_title = title; }
    QString title() const { return m_title; }

    void setPrimaryInfoText(const QString& text, const TextStyle& style);
    QString primaryInfoText() const { return m_primaryText; }
    TextStyle primaryInfoStyle() const { return m_primaryStyle; }
    void setSecondaryInfoText(const QString& text, const TextStyle& style);
    QString secondaryInfoText() const { return m_secondaryText; }
    TextStyle secondaryInfoStyle() const { return m_secondaryStyle; }

    // Whether a "go back" control is drawn beside the answers (default true).
    void setDisplaysGoBack(bool shows) { m_displaysGoBack = shows; }
    bool displaysGoBack() const { return m_displaysGoBack; }

    // Centres the list in the lower part of the title-safe frame, wide enough for its
    // longest row: at least 60% of the frame, at most all of it. Only a row that does
    // not fit even then sets the rows in a smaller text.
    void layoutSubcontrols();
    void resetLayout() override;
    // "title" is the centred title; adds "primaryText" and "secondaryText".
    QJsonObject describe() const override;

private:
    // The width the widest row's title takes in `style`, with a folder row's arrow.
    qreal widestRow(const TextStyle& style);

    QString m_title;
    QString m_primaryText;
    QString m_secondaryText;
    TextStyle m_primaryStyle;
    TextStyle m_secondaryStyle;
    bool m_displaysGoBack = true;
};

} // namespace shell
