#pragma once

#include "http/Answer.h"
#include "http/Refusal.h"
#include "http/Request.h"

#include <QtCore/QMap>
#include <QtCore/QString>

/// The pages of one folder, for a web tool or a browser: GET /{folder}/{page}, and the style sheet
/// and scripts beside them.
///
/// A page is one file for all languages, :/{folder}/{page}.html. In it {{>name}} stands for the
/// file
/// :/{folder}/parts/{name}.html and {{key}} for the text with this key in texts.tsv there, in the
/// language of the query value lang or else of the Accept-Language header: Chinese if that begins
/// with "zh", otherwise English. In parts, {{page}} is the page's name, {{page.title}} its title
/// and so on; {{sentences}} are the error table's about the service's words and those in texts.tsv
/// about what the pages themselves find, each with its word and its field.
class WebPages
{
public:
    explicit WebPages(const QString &folder);

    /// Throws Refusal(404) for what there is not.
    Answer answer(const Request &request) const;

private:
    QString readFile(const QString &name) const;
    QString withParts(QString source) const;
    QString page(const QString &name, const Request &request) const;

    const QString m_folder;
    QMap<QString, QString> m_texts[2]; ///< by key, English and Chinese
};
