// SPDX-License-Identifier: MIT
#include "services/CaptchaService.h"

#include "http/Refusal.h"
#include "services/CaptchaPicture.h"
#include "services/Denial.h"

#include <QtCore/QJsonArray>

namespace {

constexpr qint64 hourMs = 60 * 60 * 1000;

QString idAtEndOf(const QString &path)
{
    QString id = path.section(QLatin1Char('/'), -1);
    const bool alone = path.count(QLatin1Char('/')) == 3; // "/v1/captcha/id", "/_dev/captcha/id"
    if (!alone || !CaptchaLink::isCaptchaId(id)) {
        throw Refusal(400, QStringLiteral("the path must end in a captcha identifier, 36 characters"
                                          " like 0f8fad5b-d9cb-469f-a165-70867728950e"));
    }
    return id;
}

QString stateOf(const Captcha &captcha, qint64 now)
{
    constexpr int allUses = static_cast<int>(CaptchaUse::ExistenceCheck) |
                            static_cast<int>(CaptchaUse::VerificationCode);
    if (captcha.uses == allUses)
        return QStringLiteral("spent");
    return now < captcha.expiresAt ? QStringLiteral("valid") : QStringLiteral("expired");
}

} // namespace

CaptchaService::CaptchaService(Challenges &challenges, const Settings &settings, const Clock &clock)
    : m_challenges(challenges)
    , m_settings(settings)
    , m_clock(clock)
{
}

Answer CaptchaService::draw(const Request &request)
{
    const QString id = idAtEndOf(request.path);
    const int width = request.queryNumber(QStringLiteral("w"), 120, 40, 1000);
    const int height = request.queryNumber(QStringLiteral("h"), 40, 20, 500);
    const int length = request.queryNumber(QStringLiteral("l"), 4, 1, 8);
    const int wanted = request.queryNumber(QStringLiteral("e"), 300, 0, 24 * 60 * 60);
    const int set = m_settings.captchaLifetimeSeconds();
    const int seconds = set >= 0 ? set : wanted;

    const qint64 now = m_clock.now();
    const QString fixed = m_settings.fixedCaptcha();
    const QString answer = fixed.isEmpty() ? randomCaptchaText(length) : fixed;
    const QString picture = QString::fromLatin1(captchaPicture(answer, width, height).toBase64());
    // For a while an expired captcha can still be told from one that never was.
    m_challenges.removeCaptchasExpiredBefore(now - hourMs);
    m_challenges.put({id, request.query.value(QStringLiteral("p")), answer, now + seconds * 1000LL,
                      0, now, picture});
    return okAnswer(picture);
}

Answer CaptchaService::show(const Request &request) const
{
    const QString id = idAtEndOf(request.path);
    const std::optional<Captcha> captcha = m_challenges.captcha(id);
    if (!captcha)
        throw Refusal(404, QStringLiteral("there is no captcha %1, or no longer").arg(id));
    return okAnswer(QJsonObject{{QStringLiteral("answer"), captcha->answer},
                                {QStringLiteral("purpose"), captcha->purpose},
                                {QStringLiteral("expires"), Clock::text(captcha->expiresAt)}});
}

Answer CaptchaService::list(const Request &request) const
{
    constexpr int most = 100;
    const int limit = request.queryNumber(QStringLiteral("limit"), most, 1, most);
    const qint64 now = m_clock.now();
    QJsonArray list;
    const QVector<Captcha> captchas = m_challenges.captchas(limit);
    for (const Captcha &captcha : captchas) {
        list.append(QJsonObject{{QStringLiteral("id"), captcha.id},
                                {QStringLiteral("purpose"), captcha.purpose},
                                {QStringLiteral("answer"), captcha.answer},
                                {QStringLiteral("time"), Clock::text(captcha.drawnAt)},
                                {QStringLiteral("expires"), Clock::text(captcha.expiresAt)},
                                {QStringLiteral("state"), stateOf(captcha, now)},
                                {QStringLiteral("picture"), captcha.picture}});
    }
    return okAnswer(list);
}

void CaptchaService::use(const CaptchaLink &link, const QString &answer, CaptchaUse use)
{
    const int useBit = static_cast<int>(use);
    std::optional<Captcha> captcha = m_challenges.captcha(link.captchaId);
    if (!captcha || captcha->purpose != link.purpose || (captcha->uses & useBit) != 0)
        throw Denial(Denial::captchaErr);
    if (m_clock.now() >= captcha->expiresAt)
        throw Denial(Denial::captchaExpired);
    if (answer.compare(captcha->answer, Qt::CaseInsensitive) != 0) {
        m_challenges.removeCaptcha(captcha->id);
        throw Denial(Denial::captchaErr);
    }
    captcha->uses |= useBit;
    m_challenges.setCaptchaUses(captcha->id, captcha->uses);
}
