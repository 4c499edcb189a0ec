// SPDX-License-Identifier: MIT
#pragma once

#include <passport/Passport.h>

#include <QtCore/QStringList>
#include <QtCore/QVariantMap>

/// A facade used as the arguments say.
class Facade : public VelqorPassPort::Passport
{
public:
    explicit Facade(const QStringList &arguments, QObject *parent = nullptr)
        : Passport(parent)
        , m_initial(arguments.value(2))
        , m_request(arguments.value(3) == "request")
    {
    }

    void use()
    {
        if (!m_initial.isEmpty())
            initial(m_initial);
        // Refused at once: what counts is that connections and transfers existed.
        if (m_request)
            signIn(1);
    }

    VelqorPassPort::PassportCommunityError signIn(int port)
    {
        QVariantMap sources{{"cloud", QString("http://127.0.0.1:%1").arg(port)}}, info;
        setConfigData(
            QVariantMap{{"cloudEnvironment", "x"}, {"environments", QVariantMap{{"x", sources}}}});
        return logIn("a", "b", "c", info, false);
    }

private:
    QString m_initial;
    bool m_request;
};

/// Constructs, uses and destroys one; also found by name in a plugin.
extern "C" Q_DECL_EXPORT void liveOnce(const QStringList &arguments);
