// SPDX-License-Identifier: MIT
#pragma once

#include "http/Answer.h"
#include "http/Fields.h"
#include "http/Request.h"
#include "services/CaptchaLink.h"
#include "services/CaptchaService.h"
#include "storage/Challenges.h"
#include "storage/Clock.h"
#include "storage/Settings.h"
#include "storage/Store.h"

/// What a verification code can be for, as clients name it.
namespace CodePurpose {
inline const QString signIn = QStringLiteral("login");
inline const QString newPassword = QStringLiteral("bpwd");
inline const QString registration = QStringLiteral("register");
inline const QString information = QStringLiteral("supply");
} // namespace CodePurpose

/// Sends verification codes, to an inbox that the developer reads and to standard output, and
/// checks them when a client sends them back.
///
/// Used from the store's thread. A code is good for one user and one purpose, once, for a while,
/// and only together with the captcha that it was sent for.
class CodeService
{
public:
    CodeService(Store &store, Challenges &challenges, CaptchaService &captchas,
                const Settings &settings, const Clock &clock);

    /// userInfoValid: {"captcha","username","uuid","lang","phoneArea","source"}; answers
    /// {"expire": lifetime of the code in seconds}.
    Answer send(const Request &request);
    /// The codes sent, for the developer, the oldest first, with their states ("valid", "spent",
    /// "replaced", "expired", "tooManyTries"); query after: only those after this number, wait:
    /// milliseconds to wait for one.
    Answer inbox(const Request &request) const;

    /// Spends the latest code of body.username in body.phoneArea for this purpose. Throws Denial
    /// unless body.validCode is the code, body.uuid and body.captcha are what it was sent for, and
    /// it is good.
    void redeem(const QString &purpose, const QJsonObject &body);

private:
    void requireSendable(const std::optional<Account> &account, const QString &purpose) const;
    QString ownerOf(const Fields &body, const QString &purpose) const;
    VerificationCode newCode(const QJsonObject &body, const CaptchaLink &link) const;

    Store &m_store;
    Challenges &m_challenges;
    CaptchaService &m_captchas;
    const Settings &m_settings;
    const Clock &m_clock;
};
