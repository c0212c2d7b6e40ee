#include "toolkit/scene/ImageControl.h"

namespace shell {

ImageControl::ImageControl()
    : Control(Kind::Image)
{
}

ImageControl::~ImageControl() = default;

void ImageControl::setImage(const QImage& image)
{
    m_image = image;
}

void ImageControl::setImage(const QImage& image, int side)
{
    // Covers can be large photographs; keeping only what the screen can show saves
    // memory on a small box and time on every redraw.
    if (image.isNull() || side <= 0 || std::max(image.width(), image.height()) <= side) {
        m_image = image;
        return;
    }
    m_image = image.scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

} // namespace shell
