// SPDX-License-Identifier: MIT
#pragma once

#include <passport/Passport.h>

#include <QtCore/QObject>

#include <functional>

/// The window's one way to the account service: runs one request at a time.
///
/// A request blocks its caller while the window's events go on, so that a second click or key would
/// start another one further up the stack. Whoever shows a form locks it by busyChanged(), and
/// run() refuses the rest. Used from the window's thread; the facade outlives this object.
class Requests : public QObject
{
    Q_OBJECT

public:
    using Request =
        std::function<VelqorPassPort::PassportCommunityError(VelqorPassPort::Passport &)>;

    Requests(VelqorPassPort::Passport &facade, QObject *parent);

    /// For what needs no request: the remembered account, the token, signing out.
    VelqorPassPort::Passport &passport() { return m_passport; }

    bool isRunning() const { return m_running; }

    /// Returns the request's outcome, EC_IsRuning without a call when another one is running.
    VelqorPassPort::PassportCommunityError run(const Request &request);

    /// Has the request that is running return EC_OperationCanceledError soon.
    void cancel() { m_passport.cancel(); }

Q_SIGNALS:
    /// Before a request and, with `busy` false, after it.
    void busyChanged(bool busy);

private:
    VelqorPassPort::Passport &m_passport;
    bool m_running = false;
};
