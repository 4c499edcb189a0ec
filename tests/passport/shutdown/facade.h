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
        if (!m_request)
            return;
        // Refused at once: what counts is that connections and transfers existed.
        QVariantMap sources{{"cloud", "http://127.0.0.1:1"}}, info;
        setConfigData(
            QVariantMap{{"cloudEnvironment", "x"}, {"environments", QVariantMap{{"x", sources}}}});
        logIn("a", "b", "c", info, false);
    }

private:
    QString m_initial;
    bool m_request;
};

/// Constructs, uses and destroys one; also found by name in a plugin.
extern "C" Q_DECL_EXPORT void liveOnce(const QStringList &arguments);
