#pragma once

#include "toolkit/scene/Control.h"

#include <QImage>

namespace shell {

// An image with an optional reflection below it. The reflection amount is the
// opacity at its top (0 = none), the offset the gap between image and reflection as
// a fraction of the image's height.
class ImageControl : public Control {
public:
    ImageControl();
    ~ImageControl() override;

    void setImage(const QImage& image);
    // Scales the image down (never up), keeping its aspect, so that its larger side
    // is at most `side` pixels.
    void setImage(const QImage& image, int side);
    QImage image() const { return m_image; }

    // Where the image came from (a file path or resource name), for the front end
    // and for describe(); may stay null.
    void setSource(const QString& source) { m_source = source; }
    QString source() const { return m_source; }

    void setReflectionAmount(float amount) { m_reflectionAmount = amount; }
    float reflectionAmount() const { return m_reflectionAmount; }
    void setReflectionOffset(float offset) { m_reflectionOffset = offset; }
    float reflectionOffset() const { return m_reflectionOffset; }

private:
    QImage m_image;
    QString m_source;
    float m_reflectionAmount = 0;
    float m_reflectionOffset = 0;
};

} // namespace shell
