// SPDX-License-Identifier: MIT
#pragma once

#include "Background.h"

#include <QtCore/QVariantMap>
#include <QtWidgets/QWidget>

class CodeForm;
class CountryBox;
class Field;
class PasswordField;
class QCheckBox;
class QLineEdit;
class QPushButton;
class QTabBar;
class Requests;
class WebLinks;

/// The form for signing in: by password or, on the other tab, by verification code.
///
/// Belongs in a dialog, whose Enter key presses the button for the next step, and which locks the
/// form while a request runs.
class SignInPage : public QWidget
{
    Q_OBJECT

public:
    SignInPage(Requests &requests, const HostSettings &settings, QWidget *parent = nullptr);

    /// Fills in the remembered account and puts the focus where the user goes on. Has the countries
    /// fetched beside everything else, if they are not there yet.
    void begin();

Q_SIGNALS:
    void signedIn(const QVariantMap &profile);
    /// A sentence for the user, and one about what went wrong and belongs to no field.
    void said(const QString &sentence);
    void failed(const QString &sentence);

private:
    void layOut();
    void connectAll();
    bool byCode() const;
    void showWay();
    void fetchCountries();
    void fetchPicture();
    void sendCode();
    void signIn();
    bool isComplete();
    bool hasAccount();
    VelqorPassPort::PassportCommunityError requestSignIn(VelqorPassPort::Passport &passport,
                                                         QVariantMap &profile) const;
    void takeOver(const QString &name, const QString &password, const QString &phoneArea);
    void show(const VelqorPassPort::PassportCommunityError &outcome);
    Field *fieldFor(const QString &input) const;
    void updateDefaultButton();

    Requests &m_requests;
    QLineEdit *m_account;
    Field *m_accountField;
    CountryBox *m_country;
    QTabBar *m_ways;
    PasswordField *m_password;
    CodeForm *m_code;
    QCheckBox *m_remember;
    QPushButton *m_signIn;
    WebLinks *m_links;
    Background m_countries;
};
