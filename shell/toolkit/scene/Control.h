#pragma once

#include <QJsonObject>
#include <QRectF>
#include <QString>

namespace shell {

// Something a layer controller shows at a frame of the scene: a header, an image or
// a text. The controller owns its controls; the front end draws them.
class Control {
public:
    enum class Kind { Header, Image, Text };

    virtual ~Control();
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;

    Kind kind() const { return m_kind; }
    // "header", "image" or "text".
    QString kindName() const;

    // Scene units, origin bottom-left.
    QRectF frame() const { return m_frame; }
    void setFrame(const QRectF& frame) { m_frame = frame; }

    // The text shown, null for controls without one.
    virtual QString text() const;

    // {"kind", "text", "frame": [x, y, w, h]}
    QJsonObject describe() const;

protected:
    explicit Control(Kind kind)
        : m_kind(kind)
    {
    }

private:
    const Kind m_kind;
    QRectF m_frame;
};

} // namespace shell
