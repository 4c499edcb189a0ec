// SPDX-License-Identifier: MIT
#pragma once

#include "nubelo/Error.h"

#include <QtCore/QList>
#include <QtCore/QMetaMethod>
#include <QtCore/QObject>
#include <QtCore/QVariantMap>
#include <QtNetwork/QSslError>

#include <atomic>
#include <functional>
#include <utility>

namespace Nubelo {

/// The answer to one call of a Manager, on whose thread it lives. Whoever asked for it releases it.
class Reply : public QObject
{
    Q_OBJECT

public:
    using Receiver = std::function<void(Reply *)>;

    /// `atReceiver` is called once, when somebody connects to finished().
    explicit Reply(Error::ErrorCode status, Receiver atReceiver)
        : m_status(status)
        , m_atReceiver(std::move(atReceiver))
    {
        ++alive;
    }
    ~Reply() override { --alive; }

    Nubelo::Error::ErrorCode status() { return m_status; }

    static inline std::atomic<int> alive{0}; ///< how many have not been released

Q_SIGNALS:
    void finished(QVariantMap map);
    void errorOccurred(Nubelo::Error::ErrorCode code);
    void sslErrorOccurred(const QList<QSslError> &errors);

protected:
    void connectNotify(const QMetaMethod &signal) override
    {
        if (signal != QMetaMethod::fromSignal(&Reply::finished))
            return;
        if (const Receiver atReceiver = std::exchange(m_atReceiver, nullptr))
            atReceiver(this);
    }

private:
    const Error::ErrorCode m_status;
    Receiver m_atReceiver;
};

} // namespace Nubelo
