// SPDX-License-Identifier: MIT
#include "services/Contact.h"

#include "http/Refusal.h"

#include <QtCore/QRegularExpression>

namespace {

bool matches(const QString &text, const QString &pattern)
{
    return QRegularExpression(QRegularExpression::anchoredPattern(pattern)).match(text).hasMatch();
}

bool isNumber(const QString &text)
{
    return matches(text, QStringLiteral("[0-9]+"));
}

} // namespace

Contact Contact::read(const Fields &body)
{
    const QString name = body.text(QStringLiteral("username"));
    const QString phoneArea = body.text(QStringLiteral("phoneArea"));
    if (matches(name, QStringLiteral("[^\\s\\p{Cc}@]+@[^\\s\\p{Cc}@]+")))
        return {name, QString()};
    if (!isNumber(name)) {
        throw Refusal(400, QStringLiteral("field \"username\" must be an e-mail address or a phone"
                                          " number of digits alone"));
    }
    if (!isNumber(phoneArea)) {
        throw Refusal(400, QStringLiteral("field \"phoneArea\" must be the digits of a calling code"
                                          " where \"username\" is a phone number"));
    }
    return {name, phoneArea};
}
