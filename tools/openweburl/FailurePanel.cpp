// SPDX-License-Identifier: MIT
#include "FailurePanel.h"

#include "Address.h"

#include <QtWidgets/QApplication>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QVBoxLayout>

namespace {

constexpr int cardEms = 30;

// The account pages' colours and shapes: background, card, text, faint text, accent, text on
// accent.
const QString look = QStringLiteral(R"(
FailurePanel { background: %1; }
#card { background: %2; border-radius: 12px; }
QLabel { color: %3; }
#address, #progress { color: %4; }
QPushButton { min-height: 38px; padding: 0 20px; border: 1px solid %5; border-radius: 8px;
              background: transparent; color: %5; font-weight: 600; }
QPushButton:default { background: %5; color: %6; }
QPushButton:focus { border: 3px solid %3; }
)");

QStringList colours()
{
    if (QApplication::palette().color(QPalette::Window).lightness() < 128)
        return {QStringLiteral("#14171c"), QStringLiteral("#1d2128"), QStringLiteral("#e6e9ee"),
                QStringLiteral("#a2abba"), QStringLiteral("#8ab4ff"), QStringLiteral("#10203c")};
    return {QStringLiteral("#f4f5f7"), QStringLiteral("#ffffff"), QStringLiteral("#1d2430"),
            QStringLiteral("#5d6778"), QStringLiteral("#1f5fc4"), QStringLiteral("#ffffff")};
}

QString ownLook()
{
    QString sheet = look;
    const QStringList inOrder = colours();
    for (const QString &colour : inOrder)
        sheet = sheet.arg(colour);
    return sheet;
}

// No part of an address may be cut off, whatever the font.
QString breakableAnywhere(const QString &text)
{
    const QChar zeroWidthSpace(0x200b);
    return text.split(QString(), Qt::SkipEmptyParts).join(zeroWidthSpace);
}

} // namespace

FailurePanel::FailurePanel(const Texts &texts, QWidget *parent)
    : QFrame(parent)
    , m_texts(texts)
    , m_rows(addCard())
    , m_heading(addLabel("heading"))
    , m_sentence(addLabel("sentence"))
    , m_address(addLabel("address"))
    , m_progress(addLabel("progress"))
    , m_tryAgain(addButton(texts.tryAgain))
{
    QFont large = font();
    large.setPointSizeF(QFontInfo(large).pointSizeF() * 1.5);
    large.setBold(true);
    m_heading->setFont(large);
    m_tryAgain->setDefault(true);
    connect(m_tryAgain, &QPushButton::clicked, this, [this] {
        m_progress->setText(m_texts.trying);
        Q_EMIT tryAgainRequested();
    });
    connect(addButton(texts.close), &QPushButton::clicked, this, &FailurePanel::closeRequested);
}

QVBoxLayout *FailurePanel::addCard()
{
    auto *card = new QFrame(this);
    card->setObjectName(QStringLiteral("card"));
    card->setMaximumWidth(cardEms * QFontInfo(font()).pixelSize());
    auto *layout = new QHBoxLayout(this);
    layout->addWidget(card, 1, Qt::AlignVCenter);
    auto *rows = new QVBoxLayout(card);
    rows->setContentsMargins(24, 24, 24, 24);
    rows->setSpacing(12);
    return rows;
}

QLabel *FailurePanel::addLabel(const char *name)
{
    auto *label = new QLabel(this);
    label->setObjectName(QLatin1String(name));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    m_rows->addWidget(label);
    return label;
}

QPushButton *FailurePanel::addButton(const QString &text)
{
    auto *button = new QPushButton(text, this);
    button->setAutoDefault(true); // so that the enter key presses it
    m_rows->addWidget(button);
    return button;
}

void FailurePanel::explain(Page::Failure failure, const QUrl &url)
{
    const Texts::Notice &shown = notice(failure);
    m_heading->setText(shown.heading);
    m_sentence->setText(shown.sentence);
    const QString address = shownAddress(url);
    m_address->setText(breakableAnywhere(address));
    m_address->setAccessibleName(address);
    m_progress->clear();
    // Read out with the button, which has the focus.
    m_tryAgain->setAccessibleDescription(
        QStringList{shown.heading, shown.sentence, address}.join(QLatin1Char('\n')));
}

QString FailurePanel::heading() const
{
    return m_heading->text();
}

void FailurePanel::showEvent(QShowEvent *event)
{
    setStyleSheet(ownLook()); // the desktop may have turned dark since
    m_tryAgain->setFocus();
    QFrame::showEvent(event);
}

const Texts::Notice &FailurePanel::notice(Page::Failure failure) const
{
    switch (failure) {
    case Page::Failure::NotFound:
        return m_texts.notFound;
    case Page::Failure::NotTrusted:
        return m_texts.notTrusted;
    case Page::Failure::NoAnswer:
        break;
    }
    return m_texts.noAnswer;
}
