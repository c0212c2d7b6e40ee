// Draws the appliances' icons at build time, so the repository holds how they look
// rather than binaries, in shapes bold enough to read from across a living room:
//   Vireo Movies    a film strip's edges around a large play button, on night blue
//   Vireo Trailers  a film strip across a wine-red tile, its middle frame lit with a
//                   play symbol: the lists of short clips, told apart at a glance

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

const QColor kWineTop(0xb3, 0x1b, 0x3a);
const QColor kWineBottom(0x4a, 0x06, 0x19);
const QColor kStrip(0x17, 0x13, 0x16);
constexpr qreal kStripHeight = 232;
constexpr int kHolesAcross = 7;
constexpr int kFrames = 3;
constexpr qreal kFrameGap = 16;

void paintBackground(QPainter& painter, const QColor& top, const QColor& bottom)
{
    QLinearGradient gradient(0, 0, 0, kSide);
    gradient.setColorAt(0, top);
    gradient.setColorAt(1, bottom);
    QPainterPath tile;
    tile.addRoundedRect(QRectF(0, 0, kSide, kSide), kCorner, kCorner);
    painter.fillPath(tile, gradient);
}

// A play triangle of height `size` around `centre`, shifted right so that it looks
// centred, as play symbols are drawn.
QPolygonF playTriangle(const QPointF& centre, qreal size)
{
    const qreal shift = size * 0.18;
    return QPolygonF({ QPointF(centre.x() - size / 2 + shift, centre.y() - size * 0.58),
        QPointF(centre.x() - size / 2 + shift, centre.y() + size * 0.58),
        QPointF(centre.x() + size / 2 + shift, centre.y()) });
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

    painter.setBrush(kNightBottom);
    painter.drawPolygon(playTriangle(centre, kButtonRadius * 0.95));
}

void paintMoviesIcon(QPainter& painter)
{
    paintBackground(painter, kNightTop, kNightBottom);
    paintFilmEdge(painter, kEdgeInset);
    paintFilmEdge(painter, kSide - kEdgeInset - kEdgeWidth);
    paintPlayButton(painter);
}

// One row of sprocket holes across the strip, centred on `y`.
void paintHolesAcross(QPainter& painter, const QRectF& strip, qreal y)
{
    const qreal pitch = strip.width() / kHolesAcross;
    const qreal hole = pitch * 0.42;
    painter.setBrush(kWhite);
    for (int i = 0; i < kHolesAcross; ++i) {
        const qreal x = strip.left() + pitch * (i + 0.5);
        painter.drawRoundedRect(QRectF(x - hole / 2, y - hole * 0.4, hole, hole * 0.8), 6, 6);
    }
}

// The strip's frames, side by side; the middle one is lit and holds the play symbol.
void paintFrames(QPainter& painter, const QRectF& strip)
{
    const qreal band = strip.height() * 0.2;
    const QRectF inner = strip.adjusted(kFrameGap, band, -kFrameGap, -band);
    const qreal width = (inner.width() - (kFrames - 1) * kFrameGap) / kFrames;
    for (int i = 0; i < kFrames; ++i) {
        const QRectF frame(
            inner.left() + i * (width + kFrameGap), inner.top(), width, inner.height());
        const bool lit = i == kFrames / 2;
        painter.setBrush(lit ? kAmber : kAmber.darker(260));
        painter.drawRoundedRect(frame, 10, 10);
        if (lit) {
            painter.setBrush(kStrip);
            painter.drawPolygon(playTriangle(frame.center(), frame.height() * 0.55));
        }
    }
}

void paintTrailersIcon(QPainter& painter)
{
    paintBackground(painter, kWineTop, kWineBottom);
    // The tile's rounded corners clip the strip that runs across it.
    QPainterPath tile;
    tile.addRoundedRect(QRectF(0, 0, kSide, kSide), kCorner, kCorner);
    painter.setClipPath(tile);
    const QRectF strip(0, (kSide - kStripHeight) / 2, kSide, kStripHeight);
    painter.setPen(Qt::NoPen);
    painter.setBrush(kStrip);
    painter.drawRect(strip);
    const qreal band = strip.height() * 0.2;
    paintHolesAcross(painter, strip, strip.top() + band / 2);
    paintHolesAcross(painter, strip, strip.bottom() - band / 2);
    paintFrames(painter, strip);
}

QImage paintIcon(bool trailers)
{
    QImage icon(kSide, kSide, QImage::Format_ARGB32_Premultiplied);
    icon.fill(Qt::transparent);
    QPainter painter(&icon);
    painter.setRenderHint(QPainter::Antialiasing);
    if (trailers)
        paintTrailersIcon(painter);
    else
        paintMoviesIcon(painter);
    return icon;
}

} // namespace

// Usage: vireo_iconmaker [--trailers] OUTPUT.png
int main(int argc, char** argv)
{
    QTextStream err(stderr);
    const bool trailers = argc == 3 && QLatin1String(argv[1]) == QLatin1String("--trailers");
    if (argc != 2 && !trailers) {
        err << "usage: vireo_iconmaker [--trailers] OUTPUT.png\n";
        return 2;
    }
    const QString output = QString::fromLocal8Bit(argv[argc - 1]);
    if (!paintIcon(trailers).save(output, "PNG")) {
        err << "vireo_iconmaker: cannot write " << output << '\n';
        return 1;
    }
    return 0;
}
