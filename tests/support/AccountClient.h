#pragma once

#include "passport/testing/Emulator.h"

/// One client of the account API, without the library: what it sends and what it makes of answers.
/// Callable from several threads; its emulator may be killed meanwhile.
class AccountClient
{
    using Emulator = VelqorPassPort::Testing::Emulator;

public:
    using Reply = Emulator::Answer;

    explicit AccountClient(Emulator &emulator) : m_emulator(emulator) {}

    Reply post(const QByteArray &path, const QJsonObject &body) const; ///< below /v1/user/
    Reply logIn(const QString &userName, const QString &password) const;
    Reply profile(const QString &token, const QByteArray &userId) const;

    /// The fields that a client sends after a person has solved a new captcha; empty when an answer
    /// did not come. `query` is added to the request for the captcha.
    QJsonObject solvedCaptcha(const QString &purpose, const QString &userName,
                              const QByteArray &query = {}) const;
    /// The same with the verification code that was sent on; empty also when none was.
    QJsonObject sentCode(const QString &purpose, const QString &userName) const;

    /// The word of a failed answer, "ok" of a good one.
    static QString word(const Reply &reply);
    static QJsonValue result(const Reply &reply);
    static QString token(const Reply &reply);

private:
    Emulator &m_emulator;
};
