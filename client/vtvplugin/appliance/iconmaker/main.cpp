// Draws the appliance's icon at build time, so the repository holds how it looks
// rather than a binary: a film strip's edges around a large play button, in shapes
// bold enough to read from across a living room.

#include <QColor>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QPointF>
#include <QPolygonF>
#include <QRadialGradient>
#include <QRectF>
#include <QString>
#include <QTextStream>

namespace {

constexpr int kSide = 512;
constexpr qreal kCorner = 96;
constexpr qreal kEdgeWidth = 72;
constexpr qreal kEdgeInset = 36;
constexpr int kHolesPerEdge = 5;
constexpr qreal kButtonRadius = 138;

const QColor kNightTop(0x23, 0x4b, 0xa8);
const QColor kNightBottom(0x0a, 0x17, 0x3d);
const QColor kAmber(0xf5, 0xc5, 0x42);
const QColor kHole(0x0a, 0x17, 0x3d);
const QColor kWhite(0xfa, 0xfa, 0xf7);

void paintBackground(QPainter& painter)
{
    QLinearGradient night(0, 0, 0, kSide);
    night.setColorAt(0, kNightTop);
    night.setColorAt(1, kNightBottom);
    QPainterPath tile;
    tile.addRoundedRect(QRectF(0, 0, kSide, kSide), kCorner, kCorner);
    painter.fillPath(tile, night);
}

// One amber band with its sprocket holes, `left` being the band's left side.
void paintFilmEdge(QPainter& painter, qreal left)
{
    const QRectF band(left, kEdgeInset, kEdgeWidth, kSide - 2 * kEdgeInset);
    painter.setPen(Qt::NoPen);
    painter.setBrush(kAmber);
    painter.drawRoundedRect(band, 18, 18);

    const qreal pitch = band.height() / kHolesPerEdge;
    const qreal hole = kEdgeWidth * 0.5;
    painter.setBrush(kHole);
    for (int i = 0; i < kHolesPerEdge; ++i) {
        const QPointF centre(band.center().x(), band.top() + pitch * (i + 0.5));
        painter.drawRoundedRect(
            QRectF(centre.x() - hole / 2, centre.y() - hole / 2, hole, hole), 8, 8);
    }
}

void paintPlayButton(QPainter& painter)
{
    const QPointF centre(kSide / 2.0, kSide / 2.0);
    QRadialGradient glow(centre, kButtonRadius * 1.35);
    glow.setColorAt(0.7, QColor(255, 255, 255, 70));
    glow.setColorAt(1, QColor(255, 255, 255, 0));
    painter.setPen(Qt::NoPen);
    painter.setBrush(glow);
    painter.drawEllipse(centre, kButtonRadius * 1.35, kButtonRadius * 1.35);

    painter.setBrush(kWhite);
    painter.drawEllipse(centre, kButtonRadius, kButtonRadius);

    // Shifted right so that the triangle looks centred, as play symbols are drawn.
    const qreal size = kButtonRadius * 0.95;
    const qreal shift = size * 0.18;
    const QPolygonF triangle({ QPointF(centre.x() - size / 2 + shift, centre.y() - size * 0.58),
        QPointF(centre.x() - size / 2 + shift, centre.y() + size * 0.58),
        QPointF(centre.x() + size / 2 + shift, centre.y()) });
    painter.setBrush(kNightBottom);
    painter.drawPolygon(triangle);
}

QImage paintIcon()
{
    QImage icon(kSide, kSide, QImage::Format_ARGB32_Premultiplied);
    icon.fill(Qt::transparent);
    QPainter painter(&icon);
    painter.setRenderHint(QPainter::Antialiasing);
    paintBackground(painter);
    paintFilmEdge(painter, kEdgeInset);
    paintFilmEdge(painter, kSide - kEdgeInset - kEdgeWidth);
    paintPlayButton(painter);
    return icon;
}

} // namespace

// Usage: vireo_iconmaker OUTPUT.png
int main(int argc, char** argv)
{
    QTextStream err(stderr);
    if (argc != 2) {
        err << "usage: vireo_iconmaker OUTPUT.png\n";
        return 2;
    }
    const QString output = QString::fromLocal8Bit(argv[1]);
    if (!paintIcon().save(output, "PNG")) {
        err << "vireo_iconmaker: cannot write " << output << '\n';
        return 1;
    }
    return 0;
}
