// SPDX-License-Identifier: MIT
#pragma once

#include "passport/testing/Emulator.h"

/// One client of the account API, without the library: what it sends and what it makes of answers.
/// logIn() and profile() may be called from several threads, and while the emulator is killed.
class AccountClient
{
    using Emulator = VelqorPassPort::Testing::Emulator;

public:
    using Reply = Emulator::Answer;

    explicit AccountClient(Emulator &emulator) : m_emulator(emulator) {}

    /// Below /v1/user/.
    Reply post(const QString &path, const QJsonObject &body, const QString &token = {}) const;
    Reply logIn(const QString &userName, const QString &password,
                const QString &phoneArea = {}) const;
    Reply profile(const QString &token, const QByteArray &userId) const;

    /// The fields that a client sends after a person has solved a new captcha. `query` is added to
    /// the request for the captcha.
    QJsonObject solvedCaptcha(const QString &purpose, const QString &userName,
                              const QString &phoneArea = QStringLiteral("86"),
                              const QByteArray &query = {}) const;
    /// The same with the verification code that was sent on; an empty one when none was.
    QJsonObject sentCode(const QString &purpose, const QString &userName,
                         const QString &phoneArea = QStringLiteral("86")) const;

    /// An object with some fields replaced or added.
    static QJsonObject with(QJsonObject object, const QJsonObject &changes);

    /// The word of a failed answer, "ok" of a good one.
    static QString word(const Reply &reply);
    static QJsonValue result(const Reply &reply);
    static QString token(const Reply &reply);

private:
    Emulator &m_emulator;
};
