// SPDX-License-Identifier: MIT
#pragma once

#include <QtWidgets/QWidget>

class Notice;
class QHBoxLayout;

/// Between the fields of a form: more than between the parts of a field, so that these belong
/// together.
int spacingOfFields(const QWidget &form);

/// A labelled input with the place for its error below it.
class Field : public QWidget
{
    Q_OBJECT

public:
    /// `label` may have a mnemonic, which leads to `input`. Takes ownership of `input`.
    Field(const QString &label, QWidget *input, QWidget *parent = nullptr);

    /// Puts a button beside the input and takes ownership of it.
    void addBeside(QWidget *button);

    /// Shows an error, has it described to assistive technology, and moves the focus to the input.
    void setError(const QString &sentence);
    void clearError();

    /// Leads the user here to type: what is there is selected.
    void focusInput();

private:
    QWidget *m_input;
    QHBoxLayout *m_row;
    Notice *m_error;
};
