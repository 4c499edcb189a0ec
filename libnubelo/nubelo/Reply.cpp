// SPDX-License-Identifier: MIT
#include "nubelo/Reply.h"

#include "nubelo/Answer_p.h"

#include <QtCore/QMetaMethod>
#include <QtCore/QPointer>

#include <atomic>
#include <optional>

namespace Nubelo {

struct Reply::Private
{
    std::atomic<Error::ErrorCode> status{Error::NoError};
    std::atomic<bool> settled{false};
    std::optional<Outcome>
        outcome; // taken when it is delivered; of the reply's thread once settled
};

Reply::Reply(QObject *parent) : QObject(parent), d(std::make_unique<Private>()) {}

Reply::~Reply() = default;

Error::ErrorCode Reply::status() const
{
    return d->status;
}

void Reply::refuse(Outcome outcome)
{
    d->status = outcome.code;
    settle(std::move(outcome));
}

void Reply::settle(Outcome outcome)
{
    if (d->settled)
        return;
    d->outcome = std::move(outcome);
    d->settled = true;
    QMetaObject::invokeMethod(this, &Reply::deliver, Qt::QueuedConnection);
}

void Reply::deliver()
{
    if (!d->outcome || !isSignalConnected(QMetaMethod::fromSignal(&Reply::finished)))
        return;
    const Outcome outcome = *std::exchange(d->outcome, std::nullopt);
    d->status = outcome.code;
    // A receiver may delete the reply between two signals.
    const QPointer<Reply> alive(this);
    if (!outcome.sslErrors.isEmpty())
        Q_EMIT sslErrorOccurred(outcome.sslErrors);
    if (alive && outcome.code != Error::NoError)
        Q_EMIT errorOccurred(outcome.code);
    if (alive)
        Q_EMIT finished(outcome.map);
}

void Reply::connectNotify(const QMetaMethod &signal)
{
    // May run on any thread, so the outcome itself is left to deliver().
    if (d->settled && signal == QMetaMethod::fromSignal(&Reply::finished))
        QMetaObject::invokeMethod(this, &Reply::deliver, Qt::QueuedConnection);
}

} // namespace Nubelo
