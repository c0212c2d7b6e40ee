#include "DemoArtwork.h"

#include <QBuffer>
#include <QColor>
#include <QLinearGradient>
#include <QPainter>
#include <QPolygonF>
#include <QXmlStreamWriter>

namespace {

constexpr int kWidth = 300;
constexpr int kHeight = 450;
constexpr int kPatterns = 4;

void drawCircles(QPainter& painter, const QColor& accent)
{
    painter.setPen(QPen(accent, 10));
    painter.setBrush(Qt::NoBrush);
    for (int r = 30; r <= 150; r += 30)
        painter.drawEllipse(QPointF(kWidth / 2.0, kHeight * 0.4), r, r);
}

void drawStripes(QPainter& painter, const QColor& accent)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(accent);
    for (int x = -kHeight; x < kWidth; x += 50)
        painter.drawPolygon(QPolygonF({ QPointF(x, kHeight), QPointF(x + 25, kHeight),
            QPointF(x + 25 + kHeight, 0), QPointF(x + kHeight, 0) }));
}

void drawTriangles(QPainter& painter, const QColor& accent)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(accent);
    for (int i = 0; i < 3; ++i) {
        const double top = 60.0 + i * 90.0;
        painter.drawPolygon(QPolygonF({ QPointF(kWidth / 2.0, top),
            QPointF(kWidth * 0.85, top + 120), QPointF(kWidth * 0.15, top + 120) }));
    }
}

void drawFrames(QPainter& painter, const QColor& accent)
{
    painter.setPen(QPen(accent, 8));
    painter.setBrush(Qt::NoBrush);
    for (int inset = 20; inset < 140; inset += 28)
        painter.drawRect(QRectF(inset, inset, kWidth - 2.0 * inset, kHeight * 0.8 - 2.0 * inset));
}

} // namespace

QImage DemoArtwork::cover(int index)
{
    QImage image(kWidth, kHeight, QImage::Format_RGB32);
    const int hue = (index * 47) % 360;
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient background(0, 0, 0, kHeight);
    background.setColorAt(0, QColor::fromHsv(hue, 170, 230));
    background.setColorAt(1, QColor::fromHsv(hue, 230, 60));
    painter.fillRect(image.rect(), background);

    const QColor accent = QColor::fromHsv((hue + 180) % 360, 200, 250, 200);
    switch (index % kPatterns) {
    case 0:
        drawCircles(painter, accent);
        break;
    case 1:
        drawStripes(painter, accent);
        break;
    case 2:
        drawTriangles(painter, accent);
        break;
    default:
        drawFrames(painter, accent);
        break;
    }
    // The band where a title would sit on a printed poster; its width tells the
    // covers of one pattern apart.
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 160));
    painter.drawRect(QRectF(0, kHeight * 0.82, kWidth, kHeight * 0.18));
    painter.setBrush(QColor(255, 255, 255, 220));
    painter.drawRect(QRectF(24, kHeight * 0.88, 60.0 + 25.0 * (index % 8), 14));
    painter.end();
    return image;
}

QByteArray DemoArtwork::coverPng(int index)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    cover(index).save(&buffer, "PNG");
    return bytes;
}

QByteArray DemoArtwork::metadataXml(const Metadata& metadata)
{
    QByteArray bytes;
    QXmlStreamWriter xml(&bytes);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("movie"));
    xml.writeTextElement(QStringLiteral("sversion"), QStringLiteral("1.0"));
    xml.writeTextElement(QStringLiteral("title"), metadata.title);
    xml.writeTextElement(QStringLiteral("description"), metadata.description);
    xml.writeTextElement(QStringLiteral("genre"), metadata.genre);
    const QList<QPair<QString, QStringList>> lists = { { QStringLiteral("cast"), metadata.cast },
        { QStringLiteral("directors"), metadata.directors },
        { QStringLiteral("producers"), metadata.producers } };
    for (const auto& [element, names] : lists) {
        xml.writeStartElement(element);
        for (const QString& name : names)
            xml.writeTextElement(QStringLiteral("name"), name);
        xml.writeEndElement();
    }
    xml.writeTextElement(QStringLiteral("duration"), QString::number(metadata.duration));
    xml.writeTextElement(
        QStringLiteral("ccontentid"), QStringLiteral("demo-") + metadata.identifier);
    xml.writeTextElement(QStringLiteral("cversion"), QStringLiteral("1"));
    xml.writeEndElement();
    xml.writeEndDocument();
    return bytes;
}
