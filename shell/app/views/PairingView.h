#pragma once

#include <QObject>
#include <QString>
#include <QtQmlIntegration/qqmlintegration.h>

namespace mediashell {

// The phone remote's pairing code while a browser waits to pair, and the page's
// address to type on the phone; nothing while none waits (or the remote is off).
class PairingView : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The shell view makes its pairing view.")
    Q_PROPERTY(QString code READ code NOTIFY changed)
    Q_PROPERTY(QString pageUrl READ pageUrl NOTIFY changed)
public:
    explicit PairingView(QObject* parent = nullptr);
    ~PairingView() override;

    // An empty code: nothing to show.
    void update(const QString& code, const QString& pageUrl);

    QString code() const { return m_code; }
    QString pageUrl() const { return m_pageUrl; }

signals:
    void changed();

private:
    QString m_code;
    QString m_pageUrl;
};

} // namespace mediashell
