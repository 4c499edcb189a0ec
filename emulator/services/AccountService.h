// SPDX-License-Identifier: MIT
#pragma once

#include "http/Answer.h"
#include "http/Request.h"
#include "services/CaptchaService.h"
#include "services/CodeService.h"
#include "storage/Clock.h"
#include "storage/Sessions.h"
#include "storage/Settings.h"
#include "storage/Store.h"

/// Signs in, resets passwords, and answers what a session may ask.
///
/// Used from the store's thread. Each operation answers one API request: ok with the result, Denial
/// with a word for the client, or Refusal when the request breaks the protocol.
class AccountService
{
public:
    AccountService(Store &store, Sessions &sessions, CaptchaService &captchas, CodeService &codes,
                   const Settings &settings, const Clock &clock);

    /// userLogin: {"username","password","phoneArea","loginType"}, query withPerms and withDentals.
    /// As many wrong passwords in a row as are set lock the account out for a while, whatever the
    /// password is then.
    Answer logIn(const Request &request);
    /// userCodeLogin: {"username","validCode","phoneArea","loginType","captcha","uuid"}, query as
    /// above.
    Answer logInByCode(const Request &request);
    /// userExistCheck: {"captcha","username","uuid","phoneArea"}.
    Answer checkExistence(const Request &request);
    /// rbpwd: {"captcha","username","uuid","password","validCode","phoneArea"}; ends the sessions.
    Answer resetPassword(const Request &request);
    /// getPassInfo: header X-Auth-Token, query userID.
    Answer profile(const Request &request);

private:
    void countWrongPassword(Account &account);
    Account findOpen(const QString &name, const QString &phoneArea) const;
    Answer startSession(const Account &account, const Request &request);

    Store &m_store;
    Sessions &m_sessions;
    CaptchaService &m_captchas;
    CodeService &m_codes;
    const Settings &m_settings;
    const Clock &m_clock;
    QString m_nobodysHash; ///< checked in place of an unknown user's
};
