#include "toolkit/media/DefaultMediaImages.h"

#include <array>
#include <cstdlib>

namespace shell {

namespace {

    constexpr int kTypeCount = static_cast<int>(MediaType::photo) + 1;

    QRgb background(int y)
    {
        const int shade = 40 + (y * 40) / DefaultMediaImages::kSide;
        return qRgb(shade / 2, shade / 2, shade);
    }

    // Sprocket holes down both edges and a lighter frame between them.
    bool filmStrip(int x, int y)
    {
        constexpr int edge = 36;
        const bool inEdge = x < edge || x >= DefaultMediaImages::kSide - edge;
        if (inEdge) {
            const int ex = x < edge ? x : x - (DefaultMediaImages::kSide - edge);
            return ex > 10 && ex < 26 && (y % 32) > 8 && (y % 32) < 24;
        }
        return x > edge + 12 && x < DefaultMediaImages::kSide - edge - 12 && y > 48
            && y < DefaultMediaImages::kSide - 48;
    }

    // A right-pointing triangle, centred.
    bool playTriangle(int x, int y)
    {
        const int left = 80;
        const int right = 190;
        const int mid = DefaultMediaImages::kSide / 2;
        if (x < left || x > right)
            return false;
        const int halfHeight = ((right - x) * 70) / (right - left);
        return std::abs(y - mid) <= halfHeight;
    }

    bool disc(int x, int y)
    {
        const int mid = DefaultMediaImages::kSide / 2;
        const int dx = x - mid;
        const int dy = y - mid;
        const int r2 = dx * dx + dy * dy;
        return r2 < 80 * 80 && r2 > 20 * 20;
    }

    bool glyph(MediaType type, int x, int y)
    {
        switch (type) {
        case MediaType::movie:
            return filmStrip(x, y);
        case MediaType::movieTrailer:
            return playTriangle(x, y);
        default:
            return disc(x, y);
        }
    }

    QImage draw(MediaType type)
    {
        QImage image(DefaultMediaImages::kSide, DefaultMediaImages::kSide, QImage::Format_RGB32);
        const QRgb ink = qRgb(200, 205, 215);
        for (int y = 0; y < image.height(); ++y) {
            auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
            for (int x = 0; x < image.width(); ++x)
                line[x] = glyph(type, x, y) ? ink : background(y);
        }
        return image;
    }

} // namespace

QImage DefaultMediaImages::imageForMediaType(MediaType type)
{
    static const std::array<QImage, kTypeCount> images = [] {
        std::array<QImage, kTypeCount> all;
        for (int i = 0; i < kTypeCount; ++i)
            all[static_cast<std::size_t>(i)] = draw(static_cast<MediaType>(i));
        return all;
    }();
    const int index = static_cast<int>(type);
    if (index < 0 || index >= kTypeCount)
        return images[static_cast<std::size_t>(MediaType::movie)];
    return images[static_cast<std::size_t>(index)];
}

} // namespace shell
