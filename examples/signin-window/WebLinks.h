// SPDX-License-Identifier: MIT
#pragma once

#include "Background.h"

#include <QtWidgets/QWidget>

class QPushButton;
class Requests;

/// Leads to the account service's pages for a new account and for a forgotten password, which the
/// web tool shows in a window of its own, one at a time. The destructor ends an open page where the
/// library can, and otherwise waits for its user to close it.
class WebLinks : public QWidget
{
    Q_OBJECT

public:
    WebLinks(Requests &requests, const HostSettings &settings, QWidget *parent = nullptr);
    ~WebLinks() override;

Q_SIGNALS:
    /// A page has made an account, or set a new password. Texts are empty where it did not say.
    void accountBrought(const QString &name, const QString &password, const QString &phoneArea);
    /// What went wrong, for the user.
    void failed(const QString &sentence);

private:
    using Flow = void (VelqorPassPort::Passport::*)(bool, QString, QString);

    void open(Flow flow, const QString &page);
    void setLinksEnabled(bool enabled);

    Requests &m_requests;
    const QString m_toolDirectory;
    QPushButton *m_signUp;
    QPushButton *m_forgotten;
    Background m_page;
};
