// SPDX-License-Identifier: MIT
#pragma once

#include "HostSettings.h"
#include "Requests.h"

#include <QtCore/QPointer>
#include <QtCore/QTimer>
#include <QtWidgets/QDialog>

class Notice;
class ProfilePage;
class QProgressBar;
class QPushButton;
class SignInPage;

/// The window of a host that does nothing but sign its user in and show who that is. As large as
/// what it shows.
///
/// While a request runs, the page is locked, and the Escape key and the button "Cancel" end the
/// request. Used from the thread of the windows. The facade outlives it, and it outlives its
/// requests: it may be closed at any time, but not deleted while one runs.
class SignInWindow : public QDialog
{
    Q_OBJECT

public:
    SignInWindow(VelqorPassPort::Passport &passport, const HostSettings &settings,
                 QWidget *parent = nullptr);

    /// Ends the request that is running; without one closes the window.
    void reject() override;

protected:
    void closeEvent(QCloseEvent *event) override;
    bool event(QEvent *event) override;

private:
    void layOut();
    void setBusy(bool busy);
    void showPage(QWidget *page);
    void showSignIn();
    void showProfile(const QVariantMap &profile);
    void fitContents();

    Requests m_requests;
    SignInPage *m_signInPage;
    ProfilePage *m_profilePage;
    Notice *m_notice;
    QProgressBar *m_progress;
    QPushButton *m_close;
    QTimer m_patience;
    QPointer<QWidget> m_focusBefore;
};
