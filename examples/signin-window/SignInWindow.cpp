#include "SignInWindow.h"

#include "ProfilePage.h"
#include "SignInPage.h"

#include <QtWidgets/QLabel>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QStackedWidget>
#include <QtWidgets/QVBoxLayout>

using namespace VelqorPassPort;

SignInWindow::SignInWindow(Passport &passport, QWidget *parent)
    : QDialog(parent)
    , m_requests(passport, this)
    , m_pages(new QStackedWidget(this))
    , m_signInPage(new SignInPage(m_requests, this))
    , m_profilePage(new ProfilePage(m_requests))
    , m_words(new QLabel)
    , m_busy(new QProgressBar)
{
    setWindowTitle(tr("Account"));
    m_words->setObjectName(QStringLiteral("words"));
    m_words->setTextFormat(Qt::PlainText);
    m_words->setWordWrap(true);
    m_words->setMinimumHeight(2 * fontMetrics().lineSpacing());
    m_busy->setObjectName(QStringLiteral("busy"));
    m_busy->setRange(0, 0);
    m_busy->setTextVisible(false);
    // Its place stays when it is hidden, so that nothing moves under the pointer.
    QSizePolicy policy = m_busy->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    m_busy->setSizePolicy(policy);
    m_busy->hide();

    m_pages->addWidget(m_signInPage);
    m_pages->addWidget(m_profilePage);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_pages);
    layout->addWidget(m_words);
    layout->addWidget(m_busy);

    connect(&m_requests, &Requests::busyChanged, m_busy, &QWidget::setVisible);
    connect(&m_requests, &Requests::said, m_words, &QLabel::setText);
    connect(m_signInPage, &SignInPage::signedIn, this, &SignInWindow::showProfile);
    connect(m_profilePage, &ProfilePage::signedOut, this, &SignInWindow::showSignIn);
    m_signInPage->begin();
    // Queued: the window is on the screen before it waits for the first answer.
    QMetaObject::invokeMethod(m_signInPage, &SignInPage::fetchMissing, Qt::QueuedConnection);
}

void SignInWindow::showSignIn()
{
    m_pages->setCurrentWidget(m_signInPage);
    m_signInPage->begin();
    m_signInPage->fetchMissing();
}

void SignInWindow::showProfile(const QVariantMap &profile)
{
    m_pages->setCurrentWidget(m_profilePage);
    m_profilePage->setProfile(profile);
}
