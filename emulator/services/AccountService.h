#pragma once

#include "http/Answer.h"
#include "http/Request.h"
#include "services/CaptchaService.h"
#include "services/CodeService.h"
#include "storage/Store.h"

/// Signs in, resets passwords, and answers what a session may ask.
///
/// Used from the store's thread. Each operation answers one API request: ok with the result, Denial
/// with a word for the client, or Refusal when the request breaks the protocol.
class AccountService
{
public:
    AccountService(Store &store, CaptchaService &captchas, CodeService &codes);

    /// userLogin: {"username","password","phoneArea","loginType"}, query withPerms and withDentals.
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
    std::optional<Account> authenticate(const QString &name, const QString &phoneArea,
                                        const QString &password) const;
    Account findOpen(const QString &name, const QString &phoneArea) const;
    Answer startSession(const Account &account, const Request &request);

    Store &m_store;
    CaptchaService &m_captchas;
    CodeService &m_codes;
    QString m_nobodysHash; ///< checked in place of an unknown user's
};
