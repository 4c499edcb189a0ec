// SPDX-License-Identifier: MIT
#include "Notice.h"

#include <QtGui/QAccessible>

Notice::Notice(QWidget *parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText); // a service's text is not ours to interpret
    setWordWrap(true);
    hide();
}

void Notice::inform(const QString &sentence)
{
    show(sentence, parentWidget()->palette().color(QPalette::WindowText));
}

void Notice::warn(const QString &sentence)
{
    const bool isDark = parentWidget()->palette().color(QPalette::Window).lightness() < 128;
    show(sentence, isDark ? QColor(255, 150, 140) : QColor(170, 20, 20));
}

void Notice::withdraw()
{
    clear();
    hide();
}

void Notice::show(const QString &sentence, const QColor &colour)
{
    QPalette colours = palette();
    colours.setColor(QPalette::WindowText, colour);
    setPalette(colours);
    setText(sentence);
    setVisible(true);
    QAccessibleEvent alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}
