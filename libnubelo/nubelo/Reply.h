// SPDX-License-Identifier: MIT
#pragma once

#include "nubelo/Error.h"

#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QVariantMap>
#include <QtNetwork/QSslError>

#include <memory>

namespace Nubelo {

class Manager;
struct Outcome;

/// The running answer to one call of the Manager.
///
/// Lives on the Manager's thread and emits there. Owned by whoever asked for it, who releases it
/// with deleteLater(); a reply that nobody released goes with its Manager. Releasing a reply early
/// cancels its request. Every reply finishes exactly once, from a later turn of its thread's event
/// loop than the one that created it, also after an error, a deadline or the Manager's destruction;
/// an outcome that nobody listens to is kept until somebody connects to finished().
class NUBELO_EXPORT Reply : public QObject
{
    Q_OBJECT

public:
    ~Reply() override;

    /// What was found before anything was sent is known here at once. The outcome of a transfer,
    /// however quick, is known from its delivery on: whoever creates a reply, finds no error and
    /// connects in the same turn receives every signal. Callable from any thread.
    Nubelo::Error::ErrorCode status() const;

Q_SIGNALS:
    /// Always the last signal. The service's answer {"status": text, "result": value}, or an empty
    /// map when there was none.
    void finished(QVariantMap map);

    /// At most once, before finished(): the network, the HTTP status or the answer's form failed.
    void errorOccurred(Nubelo::Error::ErrorCode code);

    /// At most once, before errorOccurred(): why the peer was not trusted.
    void sslErrorOccurred(const QList<QSslError> &errors);

protected:
    /// Sees the first receiver of a signal come.
    void connectNotify(const QMetaMethod &signal) override;

private:
    friend class Manager;
    explicit Reply(QObject *parent = nullptr);
    void refuse(Outcome outcome); ///< ends it in the call that creates it; status() tells at once
    void settle(Outcome outcome); ///< ends it; status() tells with the delivery
    void deliver();

    struct Q_DECL_HIDDEN Private;
    std::unique_ptr<Private> d;
};

} // namespace Nubelo
