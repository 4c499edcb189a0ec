// SPDX-License-Identifier: MIT
#include "Heading.h"

#include <QtWidgets/QLabel>

QLabel *newHeading()
{
    auto *heading = new QLabel;
    heading->setTextFormat(Qt::PlainText);
    heading->setWordWrap(true);
    QFont font = heading->font();
    font.setPointSizeF(font.pointSizeF() * 1.4);
    font.setBold(true);
    heading->setFont(font);
    return heading;
}
