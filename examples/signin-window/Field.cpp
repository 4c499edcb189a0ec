// SPDX-License-Identifier: MIT
#include "Field.h"

#include "Notice.h"

#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QVBoxLayout>

int spacingOfFields(const QWidget &form)
{
    return form.fontMetrics().height() * 2 / 3;
}

Field::Field(const QString &label, QWidget *input, QWidget *parent)
    : QWidget(parent)
    , m_input(input)
    , m_row(new QHBoxLayout)
    , m_error(new Notice(this))
{
    auto *labelAbove = new QLabel(label);
    labelAbove->setBuddy(input);
    m_row->addWidget(input, 1);
    // Above and not beside: a label then has room in any language and font.
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(layout->spacing() / 2);
    layout->addWidget(labelAbove);
    layout->addLayout(m_row);
    layout->addWidget(m_error);
}

void Field::addBeside(QWidget *button)
{
    m_row->addWidget(button);
}

void Field::setError(const QString &sentence)
{
    m_error->warn(sentence);
    // Before the focus moves: what has the focus is read out together with its description.
    m_input->setAccessibleDescription(sentence);
    focusInput();
}

void Field::clearError()
{
    m_error->withdraw();
    m_input->setAccessibleDescription(QString());
}

void Field::focusInput()
{
    m_input->setFocus();
    if (auto *line = qobject_cast<QLineEdit *>(m_input))
        line->selectAll();
}
