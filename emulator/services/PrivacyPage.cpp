// SPDX-License-Identifier: MIT
#include "services/PrivacyPage.h"

#include "http/Refusal.h"

#include <QtCore/QFile>
#include <QtCore/QRegularExpression>
#include <QtCore/QStringList>

namespace {

QString privacyDocument(const QString &oem, bool chinese)
{
    QFile file(chinese ? QStringLiteral(":/services/privacy-zh-cn.html")
                       : QStringLiteral(":/services/privacy-en.html"));
    file.open(QIODevice::ReadOnly);
    QString document = QString::fromUtf8(file.readAll());
    if (oem.isEmpty()) {
        static const QRegularExpression productLine(QStringLiteral("<p>[^<]*%1</p>\n"));
        return document.remove(productLine);
    }
    return document.arg(oem.toHtmlEscaped());
}

} // namespace

Answer privacyPage(const Request &request)
{
    QStringList segments = request.path.split(QLatin1Char('/')).mid(3); // after "/v1/privacy"
    if (segments.size() < 4) {
        throw Refusal(404, QStringLiteral("the path must be /v1/privacy/{oem}/{language}/{target}"
                                          "/{type}"));
    }
    segments.removeLast();
    const QString target = segments.takeLast();
    const QString language = segments.takeLast();
    const QString oem = segments.join(QLatin1Char('/'));
    if (target != QLatin1String("privacy")) {
        throw Refusal(
            404, QStringLiteral("there is no text \"%1\", there is \"privacy\" alone").arg(target));
    }
    return okAnswer(privacyDocument(oem, language.contains(QLatin1String("zh-cn"))));
}

QString privacyText(const QString &oem, bool chinese)
{
    const QString body = privacyDocument(oem, chinese).section(QStringLiteral("<body>"), 1);
    return body.section(QStringLiteral("</body>"), 0, 0);
}
