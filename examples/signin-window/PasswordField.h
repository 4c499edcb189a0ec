// SPDX-License-Identifier: MIT
#pragma once

#include "Field.h"

class QLineEdit;
class QPushButton;

/// A password, hidden unless its user asks to see it.
class PasswordField : public Field
{
    Q_OBJECT

public:
    explicit PasswordField(QWidget *parent = nullptr);

    QString password() const;
    /// Also hides it again.
    void setPassword(const QString &password);

private:
    void show(bool visible);

    QLineEdit *m_line;
    QPushButton *m_show;
};
