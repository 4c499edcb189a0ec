#pragma once

#include <passport/Passport.h>

#include <QtCore/QVector>
#include <QtWidgets/QWidget>

#include <functional>

/// The window's one way to the facade: runs one request at a time.
///
/// A request blocks its caller while the window's events go on, so that a second click or key would
/// start another one further up the stack. Whatever starts requests is therefore disabled while one
/// runs, and run() refuses the rest. Used from the window's thread; the facade outlives it, and no
/// widget is deleted while a request runs. Closing the window then is safe.
class Requests : public QObject
{
    Q_OBJECT

public:
    using Request = std::function<VelqorPassPort::PassportCommunityError()>;

    Requests(VelqorPassPort::Passport &facade, QObject *parent);

    VelqorPassPort::Passport &passport() { return m_passport; }

    /// Has a widget that starts requests disabled while one runs.
    void addStarter(QWidget *starter) { m_starters.append(starter); }

    /// Returns the request's outcome, EC_IsRuning without a call when another one is running.
    VelqorPassPort::PassportCommunityError run(const Request &request);

    /// Tells the user something, or with an empty text that all is well.
    void say(const QString &text) { Q_EMIT said(text); }

Q_SIGNALS:
    void busyChanged(bool busy);
    void said(const QString &text);

private:
    void setStartersEnabled(bool enabled);

    VelqorPassPort::Passport &m_passport;
    QVector<QWidget *> m_starters;
    bool m_running = false;
};
