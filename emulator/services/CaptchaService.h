// SPDX-License-Identifier: MIT
#pragma once

#include "http/Answer.h"
#include "http/Request.h"
#include "services/CaptchaLink.h"
#include "storage/Challenges.h"
#include "storage/Clock.h"
#include "storage/Settings.h"

/// The requests that a captcha opens. A right answer serves each of them once, so that a client can
/// ask for the account and for a code with the same picture; a wrong answer serves for nothing
/// more.
enum class CaptchaUse { ExistenceCheck = 1, VerificationCode = 2 };

/// Draws captchas and judges answers to them.
///
/// Used from the store's thread.
class CaptchaService
{
public:
    CaptchaService(Challenges &challenges, const Settings &settings, const Clock &clock);

    /// captcha: the picture, PNG in base64 (RFC 4648). The path ends in the identifier; the query
    /// may have w and h, pixels; l, characters; e, the lifetime in seconds; p, the purpose.
    Answer draw(const Request &request);
    /// The answer of the captcha that the path ends in, for the developer.
    Answer show(const Request &request) const;
    /// The newest captchas with their answers, pictures and states ("valid", "spent", "expired"),
    /// for the developer. One that was answered wrong is no longer there.
    Answer list(const Request &request) const;

    /// Uses up the captcha of the link. Throws Denial unless it is there for this purpose and the
    /// answer, in capitals or not, is right and in time.
    void use(const CaptchaLink &link, const QString &answer, CaptchaUse use);

private:
    Challenges &m_challenges;
    const Settings &m_settings;
    const Clock &m_clock;
};
