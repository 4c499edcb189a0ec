// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QMetaEnum>
#include <QtCore/QObject>
#include <QtCore/QString>

#include <exception>

/// A request that the account rules deny. It travels like a Refusal, but is an answer of its own:
/// what has been changed on the way to it remains.
class Denial : public std::exception
{
    Q_GADGET

public:
    /// Tells the client why; named as it is sent. libpassport/errors.tsv says what each means.
    enum Word {
        authErr,
        captchaErr,
        captchaExpired,
        codeErr,
        codeExpired,
        existErr,
        illegalErr,
        notExistErr,
        pwdErr,
        pwdTooShort,
        tooFrequent,
        tooManyTries
    };
    Q_ENUM(Word)

    explicit Denial(Word word) : m_word(word) {}

    QString word() const { return QLatin1String(QMetaEnum::fromType<Word>().valueToKey(m_word)); }
    const char *what() const noexcept override { return "request denied"; }

private:
    Word m_word;
};
