// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QVariantList>
#include <QtCore/QVariantMap>
#include <QtWidgets/QComboBox>

/// The calling code of a phone number, chosen by country. Typing searches: for the name in the
/// user's language, in English and in the country's own, for the code of two letters and for the
/// calling code.
class CountryBox : public QComboBox
{
    Q_OBJECT

public:
    explicit CountryBox(QWidget *parent = nullptr);

    bool hasCountries() const { return count() > 1; }
    /// `countries` as the service sends them; `here` is chosen, unless the user has chosen already.
    void setCountries(const QVariantList &countries, const QVariantMap &here);

    /// Without a plus sign; empty when none is chosen.
    QString callingCode() const { return currentData().toString(); }
    /// Chooses the first country with a calling code, none when there is no such.
    void setCallingCode(const QString &callingCode);

private:
    void acceptTyped();
};
