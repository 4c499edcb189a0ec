#pragma once

#include "nubelo/Error.h"

#include <QtCore/QList>
#include <QtCore/QMetaMethod>
#include <QtCore/QObject>
#include <QtCore/QVariantMap>
#include <QtNetwork/QSslError>

#include <atomic>
#include <functional>

namespace Nubelo {

class Reply : public QObject
{
    Q_OBJECT

public:
    Reply() { ++alive; }
    ~Reply() override { --alive; }

    Nubelo::Error::ErrorCode status() { return m_status; }

    static inline std::atomic<int> alive{0};

    Nubelo::Error::ErrorCode m_status = Nubelo::Error::NoError;
    std::function<void()> m_onReceiver; ///< called when somebody connects to finished()

Q_SIGNALS:
    void finished(QVariantMap map);
    void errorOccurred(Nubelo::Error::ErrorCode code);
    void sslErrorOccurred(const QList<QSslError> &errors);

protected:
    void connectNotify(const QMetaMethod &signal) override
    {
        if (m_onReceiver && signal == QMetaMethod::fromSignal(&Reply::finished))
            m_onReceiver();
    }
};

} // namespace Nubelo
