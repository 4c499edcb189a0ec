// SPDX-License-Identifier: MIT
#include "CountryBox.h"

#include "CountryNames.h"
#include "Words.h"

#include <QtCore/QCollator>
#include <QtWidgets/QCompleter>
#include <QtWidgets/QLineEdit>

#include <algorithm>

namespace {

constexpr int searchRole = Qt::UserRole + 1;
// In front of each text by which a country is found.
constexpr QChar separator = u'\n';

/// Finds by the search texts and fills in what the list shows.
class CountryCompleter : public QCompleter
{
public:
    CountryCompleter(QAbstractItemModel *countries, QObject *parent) : QCompleter(countries, parent)
    {
        setCaseSensitivity(Qt::CaseInsensitive);
        setFilterMode(Qt::MatchContains);
        setCompletionRole(searchRole);
    }

    QString pathFromIndex(const QModelIndex &index) const override
    {
        return index.data(Qt::DisplayRole).toString();
    }
};

struct Entry
{
    QString name;
    QString callingCode;
    QString searchText;
};

Entry entryOf(const QVariant &country)
{
    const QVariantMap map = country.toMap();
    const auto text = [&](const char *key) { return map.value(QLatin1String(key)).toString(); };
    const QString name = countryName(map);
    const QString area = text("phoneArea");
    return {name, area,
            QStringList{QString(), name, text("name"), text("nativeName"), text("code"),
                        QLatin1Char('+') + area, QStringLiteral("00") + area}
                .join(separator)};
}

} // namespace

CountryBox::CountryBox(QWidget *parent) : QComboBox(parent)
{
    setEditable(true);
    setInsertPolicy(NoInsert);
    // As wide as the form makes it, not as the longest of the names.
    setSizeAdjustPolicy(AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(1);
    addItem(tr("None"));
    setCompleter(new CountryCompleter(model(), this));
    connect(lineEdit(), &QLineEdit::editingFinished, this, &CountryBox::acceptTyped);
}

void CountryBox::setCountries(const QVariantList &countries, const QVariantMap &here)
{
    QVector<Entry> entries;
    entries.reserve(countries.size());
    for (const QVariant &country : countries)
        entries.append(entryOf(country));
    QCollator collator(spokenLocale());
    std::sort(entries.begin(), entries.end(), [&](const Entry &left, const Entry &right) {
        return collator.compare(left.name, right.name) < 0;
    });

    const QString hereName = countryName(here);
    const bool isTyping = lineEdit()->isModified();
    const QString typed = lineEdit()->text();
    for (const Entry &entry : qAsConst(entries)) {
        addItem(tr("%1 (+%2)").arg(entry.name, entry.callingCode), entry.callingCode);
        setItemData(count() - 1, entry.searchText, searchRole);
        if (currentIndex() == 0 && entry.name == hereName)
            setCurrentIndex(count() - 1);
    }
    if (isTyping)
        setEditText(typed);
}

void CountryBox::setCallingCode(const QString &callingCode)
{
    setCurrentIndex(callingCode.isEmpty() ? 0 : qMax(0, findData(callingCode)));
}

// What was typed is a search and not a value: it chooses the first country with such a beginning,
// else the first that contains it, and where there is none, what was chosen before.
void CountryBox::acceptTyped()
{
    const QString typed = lineEdit()->text();
    const auto find = [&](const QString &text) {
        const Qt::MatchFlags flags = Qt::MatchContains;
        const QModelIndexList found =
            model()->match(model()->index(0, 0), searchRole, text, 1, flags);
        return found.isEmpty() ? -1 : found.first().row();
    };
    int chosen = currentIndex();
    if (typed.isEmpty())
        chosen = 0;
    else if (typed != itemText(chosen)) {
        const int beginning = find(separator + typed);
        chosen = beginning >= 0 ? beginning : qMax(find(typed), chosen);
    }
    setCurrentIndex(chosen);
    setEditText(itemText(chosen));
}
