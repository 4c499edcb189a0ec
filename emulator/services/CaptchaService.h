#pragma once

#include "http/Answer.h"
#include "http/Request.h"
#include "services/CaptchaLink.h"
#include "storage/Challenges.h"

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
    explicit CaptchaService(Challenges &challenges) : m_challenges(challenges) {}

    /// captcha: the picture, PNG in base64 (RFC 4648). The path ends in the identifier; the query
    /// may have w and h, pixels; l, characters; e, the lifetime in seconds; p, the purpose.
    Answer draw(const Request &request);
    /// The answer of the captcha that the path ends in, for the developer.
    Answer show(const Request &request) const;

    /// Uses up the captcha of the link. Throws Denial unless it is there for this purpose and the
    /// answer, in capitals or not, is right and in time.
    void use(const CaptchaLink &link, const QString &answer, CaptchaUse use);

private:
    Challenges &m_challenges;
};
