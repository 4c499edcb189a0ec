#pragma once

#include <passport/PassportCommunityError.h>

#include <QtCore/QVariantMap>
#include <QtWidgets/QWidget>

class CodeFields;
class QCheckBox;
class QComboBox;
class QLineEdit;
class QPushButton;
class QTabWidget;
class Requests;

/// The form for signing in: by password or, on the other tab, by verification code.
///
/// Belongs in a dialog, whose Enter key presses the button for the next step.
class SignInPage : public QWidget
{
    Q_OBJECT

public:
    explicit SignInPage(Requests &requests, QWidget *parent);

    /// Fills in the remembered account and puts the focus where the user goes on.
    void begin();
    /// Fetches what the form shows and does not have yet: countries, and for a code a captcha.
    void fetchMissing();

Q_SIGNALS:
    void signedIn(const QVariantMap &profile);

private:
    void layOut();
    bool byCode() const;
    QString phoneArea() const;
    QString fetchCountries();
    void signIn();
    VelqorPassPort::PassportCommunityError requestSignIn(QVariantMap &profile);
    void updateDefaultButton();

    Requests &m_requests;
    QLineEdit *m_account;
    QComboBox *m_country;
    QTabWidget *m_ways;
    QLineEdit *m_password;
    CodeFields *m_code;
    QCheckBox *m_remember;
    QPushButton *m_signIn;
    bool m_hasCaptcha = false;
};
