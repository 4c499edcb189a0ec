// SPDX-License-Identifier: MIT
#pragma once

#include <QtWidgets/QLabel>

/// A sentence to the user that comes and goes; without one it takes no place. Assistive technology
/// is told of each.
class Notice : public QLabel
{
    Q_OBJECT

public:
    explicit Notice(QWidget *parent = nullptr);

    void inform(const QString &sentence);
    /// The same in the colour of errors.
    void warn(const QString &sentence);
    void withdraw();

private:
    void show(const QString &sentence, const QColor &colour);
};
