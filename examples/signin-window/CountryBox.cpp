#include "CountryBox.h"

#include "CountryNames.h"
#include "Words.h"

#include <QtCore/QCollator>
#include <QtWidgets/QCompleter>
#include <QtWidgets/QLineEdit>

#include <algorithm>

namespace {

constexpr int searchRole = Qt::UserRole + 1;

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
            QStringList{name, text("name"), text("nativeName"), text("code"),
                        QLatin1Char('+') + area, QStringLiteral("00") + area}
                .join(QLatin1Char('\n'))};
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

// What was typed is a search and not a value: the first that it finds, or what was chosen before.
void CountryBox::acceptTyped()
{
    const QString typed = lineEdit()->text();
    int found = currentIndex();
    if (typed.isEmpty())
        found = 0;
    else if (typed != itemText(found)) {
        for (int i = count() - 1; i >= 0; --i) {
            if (itemData(i, searchRole).toString().contains(typed, Qt::CaseInsensitive) ||
                itemText(i) == typed)
                found = i;
        }
    }
    setCurrentIndex(found);
    setEditText(itemText(found));
}
