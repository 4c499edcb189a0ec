#pragma once

#include "Requests.h"

#include <QtWidgets/QDialog>

class ProfilePage;
class QLabel;
class QProgressBar;
class QStackedWidget;
class SignInPage;

/// The window of a host that does nothing but sign its user in and show who that is.
///
/// Used from the thread of the windows. The facade outlives it, and it outlives its requests: it
/// may be closed at any time, but not deleted while one runs.
class SignInWindow : public QDialog
{
    Q_OBJECT

public:
    explicit SignInWindow(VelqorPassPort::Passport &passport, QWidget *parent = nullptr);

private:
    void showSignIn();
    void showProfile(const QVariantMap &profile);

    Requests m_requests;
    QStackedWidget *m_pages;
    SignInPage *m_signInPage;
    ProfilePage *m_profilePage;
    QLabel *m_words;
    QProgressBar *m_busy;
};
