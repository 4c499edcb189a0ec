// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QVariantMap>
#include <QtWidgets/QWidget>

class QFormLayout;
class QLabel;
class QPushButton;
class Requests;

/// Who is signed in.
class ProfilePage : public QWidget
{
    Q_OBJECT

public:
    explicit ProfilePage(Requests &requests, QWidget *parent = nullptr);

    void setProfile(const QVariantMap &profile);

Q_SIGNALS:
    void signedOut();
    /// What went wrong, for the user.
    void failed(const QString &sentence);

private:
    void refresh();

    Requests &m_requests;
    QLabel *m_title;
    QFormLayout *m_rows;
    QPushButton *m_refresh;
};
