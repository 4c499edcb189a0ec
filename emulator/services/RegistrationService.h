// SPDX-License-Identifier: MIT
#pragma once

#include "http/Answer.h"
#include "http/Request.h"
#include "services/CodeService.h"
#include "storage/Sessions.h"
#include "storage/Store.h"

/// Creates accounts and adds information to them.
///
/// Used from the store's thread. A client that sends back the verification code is taken for the
/// owner of the e-mail address or phone number that the code went to. Each operation answers one
/// API request like those of AccountService.
class RegistrationService
{
public:
    RegistrationService(Store &store, Sessions &sessions, CodeService &codes)
        : m_store(store)
        , m_sessions(sessions)
        , m_codes(codes)
    {
    }

    /// registerUser: {"username","phoneArea","captcha","uuid","validCode","password"}; answers
    /// {"user_id"}.
    Answer registerUser(const Request &request);
    /// supplyInfo: header X-Auth-Token, {"companyName","companyType","companyPurpose"} and, all or
    /// none, {"username","phoneArea","captcha","uuid","validCode"} of a further contact.
    Answer supplyInfo(const Request &request);

private:
    Store &m_store;
    Sessions &m_sessions;
    CodeService &m_codes;
};
