#pragma once

#include "http/Answer.h"
#include "http/Request.h"
#include "services/CodeService.h"
#include "storage/Store.h"

/// The rules by which accounts come to be and learn more about their owner.
///
/// Used from the store's thread. An e-mail address or a phone number is believed to whom a code
/// sent there comes back from. Each operation answers one API request like those of AccountService.
class RegistrationService
{
public:
    RegistrationService(Store &store, CodeService &codes) : m_store(store), m_codes(codes) {}

    /// registerUser: {"username","phoneArea","captcha","uuid","validCode","password"}; answers
    /// {"user_id"}.
    Answer registerUser(const Request &request);
    /// supplyInfo: header X-Auth-Token, {"companyName","companyType","companyPurpose"} and, all or
    /// none, {"username","phoneArea","captcha","uuid","validCode"} of a further contact.
    Answer supplyInfo(const Request &request);

private:
    Store &m_store;
    CodeService &m_codes;
};
