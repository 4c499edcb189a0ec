// SPDX-License-Identifier: MIT
#include "web/WebPages.h"

#include "http/Refusal.h"
#include "services/PrivacyPage.h"

#include <errortable/ErrorTable.h>

#include <QtCore/QFile>
#include <QtCore/QRegularExpression>
#include <QtCore/QStringList>
#include <QtCore/QUrl>
#include <QtCore/QUrlQuery>

namespace {

enum Language { English, Chinese };

const QString langKey = QStringLiteral("lang");

Language languageOf(const Request &request)
{
    const QString wish =
        request.query.contains(langKey)
            ? request.query.value(langKey)
            : request.headerValues(QStringLiteral("Accept-Language")).join(QLatin1Char(','));
    // The language that stands first; browsers put it there.
    return wish.startsWith(QLatin1String("zh"), Qt::CaseInsensitive) ? Chinese : English;
}

// The query of a page, as HTML.
QString queryText(const QMap<QString, QString> &values)
{
    QUrlQuery query;
    for (auto it = values.begin(); it != values.end(); ++it)
        query.addQueryItem(it.key(), QString::fromLatin1(QUrl::toPercentEncoding(it.value())));
    return query.toString(QUrl::FullyEncoded).toHtmlEscaped();
}

// In one pass, so that braces in a value stand for themselves.
QString withValues(const QString &source, const QMap<QString, QString> &values)
{
    static const QRegularExpression placeholder(QStringLiteral("\\{\\{([A-Za-z.-]+)\\}\\}"));
    QString result;
    int end = 0;
    for (auto it = placeholder.globalMatch(source); it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        result += source.midRef(end, match.capturedStart() - end);
        result += values.value(match.captured(1), match.captured());
        end = match.capturedEnd();
    }
    return result + source.midRef(end);
}

// What a page says about a word of the service or of its own script, and the field it is about.
void addSentence(QMap<QString, QString> &texts, const QString &word, const QString &text,
                 const QString &field)
{
    const QString attribute =
        field.isEmpty() ? QString() : QStringLiteral(" data-field=\"%1\"").arg(field);
    texts[QStringLiteral("sentences")] +=
        QStringLiteral("<p data-word=\"%1\"%2>%3</p>\n").arg(word, attribute, text);
}

// Of what a page loads; empty for a page.
QByteArray typeByName(const QString &name)
{
    if (name.endsWith(QLatin1String(".css")))
        return "text/css; charset=utf-8";
    if (name.endsWith(QLatin1String(".js")))
        return "text/javascript; charset=utf-8";
    if (name.endsWith(QLatin1String(".svg")))
        return "image/svg+xml";
    return {};
}

// A page loads nothing from other origins, and does not pass on its own address, whose query may
// name the user.
void addSecurityHeaders(Answer &answer)
{
    answer.headers = {{"Content-Security-Policy",
                       "default-src 'self'; img-src 'self' data:; frame-ancestors 'none';"
                       " base-uri 'none'; form-action 'self'"},
                      {"Referrer-Policy", "no-referrer"}};
}

} // namespace

WebPages::WebPages(const QString &folder, const Settings &settings)
    : m_folder(folder)
    , m_settings(settings)
{
    if (!QFile::exists(QStringLiteral(":/%1/texts.tsv").arg(m_folder)))
        return;
    const QLatin1String prefix("error.");
    const QStringList lines =
        readFile(QStringLiteral("texts.tsv")).split(QLatin1Char('\n'), Qt::SkipEmptyParts).mid(1);
    for (const QString &line : lines) {
        const QStringList columns = line.split(QLatin1Char('\t'));
        for (const Language language : {English, Chinese}) {
            const QString text = columns.value(1 + language).toHtmlEscaped();
            m_texts[language].insert(columns.value(0), text);
            m_texts[language][QStringLiteral("texts")] +=
                QStringLiteral("<p data-key=\"%1\">%2</p>\n").arg(columns.value(0), text);
            if (columns.value(0).startsWith(prefix))
                addSentence(m_texts[language], columns.value(0).mid(prefix.size()), text,
                            columns.value(3));
        }
    }
    for (const ErrorEntry &entry : errorTable()) {
        if (entry.kind != ErrorEntry::Kind::Word)
            continue;
        addSentence(m_texts[English], entry.name, entry.english.toHtmlEscaped(), entry.field);
        addSentence(m_texts[Chinese], entry.name, entry.chinese.toHtmlEscaped(), entry.field);
    }
}

QString WebPages::readFile(const QString &name) const
{
    QFile file(QStringLiteral(":/%1/%2").arg(m_folder, name));
    if (!file.open(QIODevice::ReadOnly))
        throw Refusal(404,
                      QStringLiteral("there is no web page or file /%1/%2").arg(m_folder, name));
    return QString::fromUtf8(file.readAll());
}

QString WebPages::withParts(QString source) const
{
    static const QRegularExpression part(QStringLiteral("\\{\\{>([a-z-]+)\\}\\}\n?"));
    for (;;) {
        const QRegularExpressionMatch match = part.match(source);
        if (!match.hasMatch())
            return source;
        source.replace(match.capturedStart(), match.capturedLength(),
                       readFile(QStringLiteral("parts/%1.html").arg(match.captured(1))));
    }
}

Answer WebPages::answer(const Request &request) const
{
    const QString folder = QStringLiteral("/%1/").arg(m_folder);
    const QString name = request.path.mid(folder.size());
    if (name.contains(QLatin1Char('/')))
        throw Refusal(404, QStringLiteral("there is nothing at %1").arg(request.path));
    Answer answer;
    addSecurityHeaders(answer);
    answer.contentType = typeByName(name);
    const bool isPage = answer.contentType.isEmpty();
    answer.body = (isPage ? page(name, request) : readFile(name)).toUtf8();
    if (isPage)
        answer.contentType = "text/html; charset=utf-8";
    return answer;
}

QString WebPages::page(const QString &name, const Request &request) const
{
    const QString source = readFile(name + QLatin1String(".html"));
    const Language language = languageOf(request);
    const bool chinese = language == Chinese;
    QMap<QString, QString> values = m_texts[language];
    values.insert(QStringLiteral("lang"), chinese ? QStringLiteral("zh-CN") : QStringLiteral("en"));
    values.insert(QStringLiteral("other-lang"),
                  chinese ? QStringLiteral("en") : QStringLiteral("zh-CN"));
    QMap<QString, QString> query = request.query;
    query.insert(langKey, chinese ? QStringLiteral("en") : QStringLiteral("zh-cn"));
    values.insert(QStringLiteral("other-query"), queryText(query));
    query.insert(langKey, chinese ? QStringLiteral("zh-cn") : QStringLiteral("en"));
    if (!query.contains(QStringLiteral("from")) && name != QLatin1String("privacy"))
        query.insert(QStringLiteral("from"), name);
    values.insert(QStringLiteral("link-query"), queryText(query));
    values.insert(QStringLiteral("lang-code"), query.value(langKey));
    values.insert(QStringLiteral("page"), name);
    values.insert(QStringLiteral("code-interval"),
                  QString::number(m_settings.codeIntervalSeconds()));
    for (const char *part : {".title", ".submit", ".done", ".untold"}) {
        const QLatin1String ending(part);
        values.insert(QLatin1String("page") + ending, values.value(name + ending));
    }
    values.insert(QStringLiteral("privacy"),
                  privacyText(request.query.value(QStringLiteral("oem")), chinese));
    return withValues(withParts(source), values);
}
