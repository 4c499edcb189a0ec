#pragma once

#include "Message.h"
#include "Store.h"

/// The rules of the account service: who may sign in, and what a session may ask.
///
/// Used from the store's thread. Each operation answers one API request: ok with the result, fail
/// with a word the client library knows, or Refusal when the request breaks the protocol.
class AccountService
{
public:
    explicit AccountService(Store &store);

    /// userLogin: {"username","password","phoneArea","loginType"}, query withPerms and withDentals.
    Answer logIn(const Request &request);
    /// getPassInfo: header X-Auth-Token, query userID.
    Answer profile(const Request &request);

private:
    std::optional<Account> authenticate(const QString &name, const QString &phoneArea,
                                        const QString &password) const;
    QString startSession(const Account &account, const QString &ip);

    Store &m_store;
    QString m_nobodysHash; ///< checked in place of an unknown user's
};
