#pragma once

#include <QColor>
#include <QObject>
#include <QString>
#include <QtQmlIntegration/qqmlintegration.h>

namespace shell {
struct TextStyle;
}

namespace mediashell {

// A theme text style as QML reads it: `textStyle` values carry the font's family,
// pixel size and weight, and the text's colour.
class TextStyleView {
    Q_GADGET
    QML_VALUE_TYPE(textStyle)
    Q_PROPERTY(QString family READ family CONSTANT)
    Q_PROPERTY(qreal pixelSize READ pixelSize CONSTANT)
    Q_PROPERTY(int weight READ weight CONSTANT)
    Q_PROPERTY(QColor color READ color CONSTANT)
public:
    // The toolkit's default style.
    TextStyleView();
    explicit TextStyleView(const shell::TextStyle& style);

    QString family() const { return m_family; }
    qreal pixelSize() const { return m_pixelSize; }
    int weight() const { return m_weight; }
    QColor color() const { return m_color; }

    bool operator==(const TextStyleView&) const = default;

private:
    QString m_family;
    qreal m_pixelSize = 0;
    int m_weight = 0;
    QColor m_color;
};

} // namespace mediashell
