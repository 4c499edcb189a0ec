// SPDX-License-Identifier: MIT
#include "Translations.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QLibraryInfo>

// In a static library a resource has to be asked for, and outside of any namespace.
static void addResource()
{
    Q_INIT_RESOURCE(texts);
}

namespace {

QString ownTexts()
{
    return QStringLiteral(":/signin-window");
}

// The first of the user's languages that there is, in the order that they have set. QTranslator
// would pass over English, which has no file, and take the next one.
QLocale firstSpoken(const QLocale &locale)
{
    const QStringList languages = locale.uiLanguages();
    for (const QString &language : languages) {
        const QLocale candidate(language);
        if (candidate.language() == QLocale::English ||
            QTranslator().load(candidate, QStringLiteral("window"), QStringLiteral("_"),
                               ownTexts()))
            return candidate;
    }
    return QLocale(QLocale::English);
}

} // namespace

Translations::Translations(const QLocale &locale)
{
    addResource();
    const QLocale spoken = firstSpoken(locale);
    if (spoken.language() == QLocale::English)
        return;
    const std::array<QPair<QString, QString>, 3> files{{
        {QStringLiteral("qtbase"), QLibraryInfo::location(QLibraryInfo::TranslationsPath)},
        {QStringLiteral("window"), ownTexts()},
        {QStringLiteral("errors"), ownTexts()},
    }};
    for (size_t i = 0; i < files.size(); ++i) {
        QTranslator &translator = m_translators.at(i);
        const auto &[name, directory] = files.at(i);
        if (translator.load(spoken, name, QStringLiteral("_"), directory))
            QCoreApplication::installTranslator(&translator);
    }
}
