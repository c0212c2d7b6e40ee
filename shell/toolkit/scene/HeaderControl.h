#pragma once

#include "toolkit/scene/Control.h"

namespace shell {

// A screen's heading, drawn in the theme's header style.
class HeaderControl : public Control {
public:
    HeaderControl();
    ~HeaderControl() override;

    void setTitle(const QString& title) { m_title = title; }
    QString title() const { return m_title; }
    QString text() const override { return m_title; }

private:
    QString m_title;
};

} // namespace shell
