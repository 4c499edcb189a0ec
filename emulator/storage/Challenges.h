// SPDX-License-Identifier: MIT
#pragma once

#include "storage/Database.h"

#include <QtCore/QString>
#include <QtCore/QVector>

#include <optional>

/// A captcha that has been drawn and may still be answered. Times are milliseconds since 1970.
struct Captcha
{
    QString id; ///< chosen by the client
    QString purpose;
    QString answer;
    qint64 expiresAt = 0;
    int uses = 0; ///< for which requests it has been answered: bits of CaptchaUse
    qint64 drawnAt = 0;
    QString picture; ///< PNG in base64
};

/// A verification code that has been sent. Times are milliseconds since 1970.
struct VerificationCode
{
    qint64 id = 0; ///< given when it is added, ever increasing
    QString owner; ///< see CodeService; of one owner and purpose only the latest is good
    QString purpose;
    QString digits;
    QString userName; ///< as the client gave it, and so the phone area
    QString phoneArea;
    QString language;
    QString captchaId; ///< the captcha that the code was sent for, and its answer
    QString captcha;
    qint64 sentAt = 0;
    qint64 expiresAt = 0;
    int wrongTries = 0;
    bool spent = false;
    bool replaced = false; ///< there is a later one of this owner and purpose
};

/// Captchas and verification codes in the data file.
///
/// Used from the database's thread; changes belong to the caller's transaction. Every operation
/// throws StoreError when the file fails it.
class Challenges
{
public:
    explicit Challenges(const Database &database) : m_database(database) {}

    static QStringList schema();

    /// Adds a captcha, in the place of one with the same identifier, and drops the oldest over
    /// 1000.
    void put(const Captcha &captcha);
    void setCaptchaUses(const QString &id, int uses);
    QVector<Captcha> captchas(int limit) const; ///< the newest first
    std::optional<Captcha> captcha(const QString &id) const;
    void removeCaptcha(const QString &id);
    void removeCaptchasExpiredBefore(qint64 time);

    /// Adds a code, whose number is ignored, and drops the oldest over 1000.
    void add(const VerificationCode &sent);
    std::optional<VerificationCode> latestCode(const QString &owner, const QString &purpose) const;
    QVector<VerificationCode> codesAfter(qint64 id) const; ///< the oldest first
    void setCodeState(qint64 id, int wrongTries, bool spent);

private:
    const Database &m_database;
};
