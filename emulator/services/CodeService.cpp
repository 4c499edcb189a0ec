#include "services/CodeService.h"

#include "http/Refusal.h"
#include "services/Contact.h"
#include "services/Denial.h"

#include <QtCore/QDateTime>
#include <QtCore/QJsonArray>
#include <QtCore/QRandomGenerator>

#include <limits>

namespace {

constexpr int maximumWrongTries = 5;

const QString registering = QStringLiteral("register");
const QString supplying = QStringLiteral("supply");

// A code proves an account, which is one owner under all its names, or a contact that is to become
// part of one.
bool provesContact(const QString &purpose)
{
    return purpose == registering || purpose == supplying;
}

QString timeText(qint64 time)
{
    return QDateTime::fromMSecsSinceEpoch(time, Qt::UTC).toString(Qt::ISODateWithMs);
}

void requireKnownPurpose(const QString &purpose)
{
    const QStringList known = {QStringLiteral("login"), QStringLiteral("bpwd"), registering,
                               supplying};
    if (!known.contains(purpose)) {
        throw Refusal(400,
                      QStringLiteral("field \"uuid\": no codes are sent for the purpose \"%1\";"
                                     " known are %2")
                          .arg(purpose, known.join(QStringLiteral(", "))));
    }
}

} // namespace

CodeService::CodeService(Store &store, Challenges &challenges, CaptchaService &captchas,
                         const Settings &settings)
    : m_store(store)
    , m_challenges(challenges)
    , m_captchas(captchas)
    , m_settings(settings)
{
}

Answer CodeService::send(const Request &request)
{
    const QJsonObject body = request.json();
    const Fields fields(body);
    const CaptchaLink link = CaptchaLink::parse(fields.text(QStringLiteral("uuid")));
    VerificationCode code = newCode(body, link);
    if (!link.captchaId.isEmpty())
        requireKnownPurpose(link.purpose);
    m_captchas.use(link, code.captcha, CaptchaUse::VerificationCode);

    const std::optional<Account> account = m_store.find(code.userName, code.phoneArea);
    requireSendable(account, link.purpose);
    code.owner = ownerOf(fields, code.purpose);
    const std::optional<VerificationCode> latest =
        m_challenges.latestCode(code.owner, code.purpose);
    if (latest && code.sentAt < latest->sentAt + m_settings.codeIntervalSeconds() * 1000LL)
        throw Denial(Denial::tooFrequent);
    m_challenges.add(code);

    Answer answer =
        okAnswer(QJsonObject{{QStringLiteral("expire"), m_settings.codeLifetimeSeconds()}});
    answer.consoleLine =
        QStringLiteral("code %1 for %2, purpose %3").arg(code.code, code.userName, code.purpose);
    return answer;
}

void CodeService::requireSendable(const std::optional<Account> &account,
                                  const QString &purpose) const
{
    if (account && account->locked)
        throw Denial(Denial::illegalErr);
    if (account && purpose == registering)
        throw Denial(Denial::existErr);
    if (!account && !provesContact(purpose))
        throw Denial(Denial::notExistErr);
}

QString CodeService::ownerOf(const Fields &body, const QString &purpose) const
{
    if (provesContact(purpose))
        return Contact::read(body).key();
    const std::optional<Account> account =
        m_store.find(body.text(QStringLiteral("username")), body.text(QStringLiteral("phoneArea")));
    return account ? QString::number(account->userId) : QString();
}

VerificationCode CodeService::newCode(const QJsonObject &body, const CaptchaLink &link) const
{
    const Fields fields(body);
    VerificationCode code;
    code.purpose = link.purpose;
    code.code = QStringLiteral("%1").arg(QRandomGenerator::system()->bounded(1000000), 6, 10,
                                         QLatin1Char('0'));
    code.captchaId = link.captchaId;
    code.captcha = fields.text(QStringLiteral("captcha"));
    code.userName = fields.text(QStringLiteral("username"));
    code.phoneArea = fields.text(QStringLiteral("phoneArea"));
    code.language = fields.text(QStringLiteral("lang"));
    code.sentAt = QDateTime::currentMSecsSinceEpoch();
    code.expiresAt = code.sentAt + m_settings.codeLifetimeSeconds() * 1000LL;
    return code;
}

Answer CodeService::inbox(const Request &request) const
{
    const int after =
        request.queryNumber(QStringLiteral("after"), 0, 0, std::numeric_limits<int>::max());
    const int waitMs = request.queryNumber(QStringLiteral("wait"), 0, 0, 10 * 60 * 1000);
    QJsonArray messages;
    const QVector<VerificationCode> codes = m_challenges.codesAfter(after);
    for (const VerificationCode &code : codes) {
        messages.append(QJsonObject{{QStringLiteral("id"), code.id},
                                    {QStringLiteral("username"), code.userName},
                                    {QStringLiteral("phoneArea"), code.phoneArea},
                                    {QStringLiteral("purpose"), code.purpose},
                                    {QStringLiteral("code"), code.code},
                                    {QStringLiteral("lang"), code.language},
                                    {QStringLiteral("time"), timeText(code.sentAt)}});
    }
    Answer answer = okAnswer(messages);
    if (messages.isEmpty())
        answer.longPoll = std::chrono::milliseconds(waitMs);
    return answer;
}

// The order matters: who does not hold the captcha learns nothing about the code and cannot use up
// its tries.
void CodeService::redeem(const QString &purpose, const QJsonObject &body)
{
    const Fields fields(body);
    const CaptchaLink link = CaptchaLink::parse(fields.text(QStringLiteral("uuid")));
    const QString captcha = fields.text(QStringLiteral("captcha"));
    const QString given = fields.text(QStringLiteral("validCode"));
    const std::optional<VerificationCode> code =
        m_challenges.latestCode(ownerOf(fields, purpose), purpose);
    if (!code)
        throw Denial(Denial::codeErr);
    if (link.purpose != purpose || link.captchaId != code->captchaId ||
        captcha.compare(code->captcha, Qt::CaseInsensitive) != 0) {
        throw Denial(Denial::captchaErr);
    }
    if (code->spent || QDateTime::currentMSecsSinceEpoch() >= code->expiresAt)
        throw Denial(Denial::codeExpired);
    if (code->wrongTries >= maximumWrongTries)
        throw Denial(Denial::tooManyTries);
    const bool right = given == code->code;
    m_challenges.setCodeState(code->id, code->wrongTries + (right ? 0 : 1), right);
    if (!right)
        throw Denial(Denial::codeErr);
}
