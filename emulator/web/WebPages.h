// SPDX-License-Identifier: MIT
#pragma once

#include "http/Answer.h"
#include "http/Refusal.h"
#include "http/Request.h"
#include "storage/Settings.h"

#include <QtCore/QMap>
#include <QtCore/QString>

/// The pages of one folder, for a web tool or a browser: GET /{folder}/{page}, and the style sheet
/// and scripts beside them.
///
/// A page is one file for all languages, :/{folder}/{page}.html. In it {{>name}} stands for the
/// file :/{folder}/parts/{name}.html and {{key}} for the text with this key in texts.tsv there, in
/// the language of the query value lang or else of the Accept-Language header: Chinese if that
/// begins with "zh", otherwise English. In parts, {{page}} is the page's name, {{page.title}} its
/// title and so on, {{link-query}} the query with which it leads to another page: its own, with its
/// language, and as "from" the name of the first page; {{texts}} are all texts, each with its key,
/// and {{sentences}} the error table's about the service's words and those in texts.tsv about what
/// the pages themselves find, each with its word and its field.
class WebPages
{
public:
    WebPages(const QString &folder, const Settings &settings);

    /// Throws Refusal(404) for what there is not.
    Answer answer(const Request &request) const;

private:
    QString readFile(const QString &name) const;
    QString withParts(QString source) const;
    QString page(const QString &name, const Request &request) const;

    const QString m_folder;
    const Settings &m_settings;
    QMap<QString, QString> m_texts[2]; ///< by key, English and Chinese
};
