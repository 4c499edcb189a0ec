// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QLocale>
#include <QtCore/QTranslator>

#include <array>

/// The texts in the language of the user, for as long as this object lives: the window's, those of
/// the errors, and Qt's own. Made after the application object and before any window.
class Translations
{
public:
    explicit Translations(const QLocale &locale = QLocale());
    Q_DISABLE_COPY_MOVE(Translations)

private:
    std::array<QTranslator, 3> m_translators;
};
