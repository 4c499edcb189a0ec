// SPDX-License-Identifier: MIT
#include "services/CodeService.h"

#include "http/Refusal.h"
#include "services/Contact.h"
#include "services/Denial.h"

#include <QtCore/QJsonArray>
#include <QtCore/QRandomGenerator>

#include <limits>

namespace {

constexpr int maximumWrongTries = 5;

// For these purposes a code belongs to the contact that an account is to get, for the others to an
// account, whichever of its names the client gives.
bool belongsToContact(const QString &purpose)
{
    return purpose == CodePurpose::registration || purpose == CodePurpose::information;
}

QString stateOf(const VerificationCode &verificationCode, qint64 now)
{
    if (verificationCode.spent)
        return QStringLiteral("spent");
    if (verificationCode.replaced)
        return QStringLiteral("replaced");
    if (now >= verificationCode.expiresAt)
        return QStringLiteral("expired");
    return verificationCode.wrongTries < maximumWrongTries ? QStringLiteral("valid")
                                                           : QStringLiteral("tooManyTries");
}

QJsonObject message(const VerificationCode &verificationCode, qint64 now)
{
    return {{QStringLiteral("id"), verificationCode.id},
            {QStringLiteral("username"), verificationCode.userName},
            {QStringLiteral("phoneArea"), verificationCode.phoneArea},
            {QStringLiteral("purpose"), verificationCode.purpose},
            {QStringLiteral("code"), verificationCode.digits},
            {QStringLiteral("lang"), verificationCode.language},
            {QStringLiteral("time"), Clock::text(verificationCode.sentAt)},
            {QStringLiteral("expires"), Clock::text(verificationCode.expiresAt)},
            {QStringLiteral("state"), stateOf(verificationCode, now)}};
}

QString randomDigits()
{
    return QStringLiteral("%1").arg(QRandomGenerator::system()->bounded(1000000), 6, 10,
                                    QLatin1Char('0'));
}

void requireKnownPurpose(const QString &purpose)
{
    const QStringList known = {CodePurpose::signIn, CodePurpose::newPassword,
                               CodePurpose::registration, CodePurpose::information};
    if (!known.contains(purpose)) {
        throw Refusal(400,
                      QStringLiteral("field \"uuid\": no codes are sent for the purpose \"%1\";"
                                     " known are %2")
                          .arg(purpose, known.join(QStringLiteral(", "))));
    }
}

} // namespace

CodeService::CodeService(Store &store, Challenges &challenges, CaptchaService &captchas,
                         const Settings &settings, const Clock &clock)
    : m_store(store)
    , m_challenges(challenges)
    , m_captchas(captchas)
    , m_settings(settings)
    , m_clock(clock)
{
}

Answer CodeService::send(const Request &request)
{
    const QJsonObject body = request.json();
    const Fields fields(body);
    const CaptchaLink link = CaptchaLink::parse(fields.text(QStringLiteral("uuid")));
    VerificationCode verificationCode = newCode(body, link);
    if (!link.captchaId.isEmpty())
        requireKnownPurpose(link.purpose);
    m_captchas.use(link, verificationCode.captcha, CaptchaUse::VerificationCode);

    const std::optional<Account> account =
        m_store.find(verificationCode.userName, verificationCode.phoneArea);
    requireSendable(account, link.purpose);
    verificationCode.owner = ownerOf(fields, verificationCode.purpose);
    const std::optional<VerificationCode> latest =
        m_challenges.latestCode(verificationCode.owner, verificationCode.purpose);
    // Negative after the clock was set back: who sent a code in a future waits for nothing.
    const qint64 since = latest ? verificationCode.sentAt - latest->sentAt : -1;
    if (since >= 0 && since < m_settings.codeIntervalSeconds() * 1000LL)
        throw Denial(Denial::tooFrequent);
    m_challenges.add(verificationCode);

    Answer answer =
        okAnswer(QJsonObject{{QStringLiteral("expire"), m_settings.codeLifetimeSeconds()}});
    answer.consoleLine =
        QStringLiteral("code %1 for %2, purpose %3")
            .arg(verificationCode.digits, verificationCode.userName, verificationCode.purpose);
    return answer;
}

void CodeService::requireSendable(const std::optional<Account> &account,
                                  const QString &purpose) const
{
    if (account && account->isLockedAt(m_clock.now()))
        throw Denial(Denial::illegalErr);
    if (account && purpose == CodePurpose::registration)
        throw Denial(Denial::existErr);
    if (!account && !belongsToContact(purpose))
        throw Denial(Denial::notExistErr);
}

QString CodeService::ownerOf(const Fields &body, const QString &purpose) const
{
    if (belongsToContact(purpose))
        return Contact::read(body).key();
    const std::optional<Account> account =
        m_store.find(body.text(QStringLiteral("username")), body.text(QStringLiteral("phoneArea")));
    return account ? QString::number(account->userId) : QString();
}

VerificationCode CodeService::newCode(const QJsonObject &body, const CaptchaLink &link) const
{
    const Fields fields(body);
    VerificationCode verificationCode;
    verificationCode.purpose = link.purpose;
    const QString fixed = m_settings.fixedCode();
    verificationCode.digits = fixed.isEmpty() ? randomDigits() : fixed;
    verificationCode.captchaId = link.captchaId;
    verificationCode.captcha = fields.text(QStringLiteral("captcha"));
    verificationCode.userName = fields.text(QStringLiteral("username"));
    verificationCode.phoneArea = fields.text(QStringLiteral("phoneArea"));
    verificationCode.language = fields.text(QStringLiteral("lang"));
    verificationCode.sentAt = m_clock.now();
    verificationCode.expiresAt =
        verificationCode.sentAt + m_settings.codeLifetimeSeconds() * 1000LL;
    return verificationCode;
}

Answer CodeService::inbox(const Request &request) const
{
    const int after =
        request.queryNumber(QStringLiteral("after"), 0, 0, std::numeric_limits<int>::max());
    const int waitMs = request.queryNumber(QStringLiteral("wait"), 0, 0, 10 * 60 * 1000);
    QJsonArray messages;
    const QVector<VerificationCode> codes = m_challenges.codesAfter(after);
    for (const VerificationCode &verificationCode : codes)
        messages.append(message(verificationCode, m_clock.now()));
    Answer answer = okAnswer(messages);
    if (messages.isEmpty())
        answer.longPoll = std::chrono::milliseconds(waitMs);
    return answer;
}

// The order matters: a client without the captcha learns nothing about the code and cannot use up
// its tries.
void CodeService::redeem(const QString &purpose, const QJsonObject &body)
{
    const Fields fields(body);
    const CaptchaLink link = CaptchaLink::parse(fields.text(QStringLiteral("uuid")));
    const QString captcha = fields.text(QStringLiteral("captcha"));
    const QString given = fields.text(QStringLiteral("validCode"));
    const std::optional<VerificationCode> verificationCode =
        m_challenges.latestCode(ownerOf(fields, purpose), purpose);
    if (!verificationCode)
        throw Denial(Denial::codeErr);
    if (link.purpose != purpose || link.captchaId != verificationCode->captchaId ||
        captcha.compare(verificationCode->captcha, Qt::CaseInsensitive) != 0) {
        throw Denial(Denial::captchaErr);
    }
    if (verificationCode->spent || m_clock.now() >= verificationCode->expiresAt)
        throw Denial(Denial::codeExpired);
    if (verificationCode->wrongTries >= maximumWrongTries)
        throw Denial(Denial::tooManyTries);
    const bool right = given == verificationCode->digits;
    m_challenges.setCodeState(verificationCode->id, verificationCode->wrongTries + (right ? 0 : 1),
                              right);
    if (!right)
        throw Denial(Denial::codeErr);
}
