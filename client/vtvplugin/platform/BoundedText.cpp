#include "vtvplugin/platform/BoundedText.h"

qsizetype BoundedText::fittingLength(QStringView text, qsizetype maxChars)
{
    if (text.size() <= maxChars)
        return text.size();
    if (maxChars <= 0)
        return 0;
    return text.at(maxChars - 1).isHighSurrogate() ? maxChars - 1 : maxChars;
}

void BoundedText::append(QString& field, QStringView text, qsizetype maxChars)
{
    const qsizetype length = fittingLength(text, maxChars - field.size());
    if (length > 0)
        field.append(text.first(length));
}
