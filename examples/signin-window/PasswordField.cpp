// SPDX-License-Identifier: MIT
#include "PasswordField.h"

#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>

PasswordField::PasswordField(QWidget *parent)
    : Field(tr("Pass&word:"), new QLineEdit, parent)
    , m_line(findChild<QLineEdit *>())
    , m_show(new QPushButton(tr("S&how")))
{
    m_line->setObjectName(QStringLiteral("password"));
    m_line->setEchoMode(QLineEdit::Password);
    m_show->setObjectName(QStringLiteral("show"));
    m_show->setCheckable(true);
    m_show->setAutoDefault(false); // Enter signs in, wherever the focus is
    m_show->setAccessibleName(tr("Show the password"));
    addBeside(m_show);
    connect(m_show, &QPushButton::toggled, this, &PasswordField::show);
}

QString PasswordField::password() const
{
    return m_line->text();
}

void PasswordField::setPassword(const QString &password)
{
    m_show->setChecked(false);
    m_line->setText(password);
}

void PasswordField::show(bool visible)
{
    m_line->setEchoMode(visible ? QLineEdit::Normal : QLineEdit::Password);
}
