#include "services/CaptchaLink.h"

#include <QtCore/QRegularExpression>

namespace {

constexpr int idLength = 36;

} // namespace

CaptchaLink CaptchaLink::parse(const QString &text)
{
    const int hyphen = text.size() - idLength - 1;
    const QString id = text.right(idLength);
    if (hyphen < 0 || text.at(hyphen) != QLatin1Char('-') || !isCaptchaId(id))
        return {};
    return {text.left(hyphen), id};
}

bool CaptchaLink::isCaptchaId(const QString &text)
{
    static const QRegularExpression form(QRegularExpression::anchoredPattern(
        QStringLiteral("[0-9A-Fa-f]{8}(-[0-9A-Fa-f]{4}){3}-[0-9A-Fa-f]{12}")));
    return form.match(text).hasMatch();
}
