// SPDX-License-Identifier: MIT
#include "SignInWindow.h"

#include "Field.h"
#include "Notice.h"
#include "ProfilePage.h"
#include "SignInPage.h"

#include <QtGui/QCloseEvent>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QVBoxLayout>

using namespace VelqorPassPort;
using namespace std::chrono_literals;

SignInWindow::SignInWindow(Passport &passport, const HostSettings &settings, QWidget *parent)
    : QDialog(parent)
    , m_requests(passport, this)
    , m_signInPage(new SignInPage(m_requests, settings, this))
    , m_profilePage(new ProfilePage(m_requests, this))
    , m_notice(new Notice(this))
    , m_progress(new QProgressBar)
    , m_close(new QPushButton(tr("Close")))
{
    setWindowTitle(tr("Account"));
    m_notice->setObjectName(QStringLiteral("notice"));
    m_progress->setObjectName(QStringLiteral("progress"));
    m_progress->setAccessibleName(tr("Waiting for the account service"));
    m_progress->setRange(0, 0);
    m_progress->setTextVisible(false);
    m_close->setObjectName(QStringLiteral("close"));
    m_close->setAutoDefault(false); // the second of two quick Enters must not cancel
    // What is answered at once does not flicker.
    m_patience.setSingleShot(true);
    m_patience.setInterval(250ms);
    layOut();

    connect(&m_patience, &QTimer::timeout, m_progress, &QWidget::show);
    connect(m_close, &QPushButton::clicked, this, &SignInWindow::reject);
    connect(&m_requests, &Requests::busyChanged, this, &SignInWindow::setBusy);
    connect(m_signInPage, &SignInPage::said, m_notice, &Notice::inform);
    connect(m_signInPage, &SignInPage::failed, m_notice, &Notice::warn);
    connect(m_signInPage, &SignInPage::signedIn, this, &SignInWindow::showProfile);
    connect(m_profilePage, &ProfilePage::failed, m_notice, &Notice::warn);
    connect(m_profilePage, &ProfilePage::signedOut, this, &SignInWindow::showSignIn);
    showSignIn();
}

void SignInWindow::layOut()
{
    auto *bottom = new QHBoxLayout;
    bottom->addWidget(m_progress, 1);
    bottom->addStretch();
    bottom->addWidget(m_close);
    auto *layout = new QVBoxLayout(this);
    const int margin = fontMetrics().height();
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(spacingOfFields(*this));
    layout->addWidget(m_signInPage);
    layout->addWidget(m_profilePage);
    layout->addWidget(m_notice);
    layout->addLayout(bottom);
    m_progress->hide();
}

void SignInWindow::reject()
{
    if (m_requests.isRunning())
        m_requests.cancel();
    else
        QDialog::reject();
}

void SignInWindow::closeEvent(QCloseEvent *event)
{
    m_requests.cancel();
    QDialog::reject();
    event->accept();
}

bool SignInWindow::event(QEvent *event)
{
    const bool isDone = QDialog::event(event);
    if (event->type() == QEvent::LayoutRequest)
        fitContents();
    return isDone;
}

void SignInWindow::setBusy(bool busy)
{
    if (busy) {
        m_focusBefore = focusWidget();
        m_notice->withdraw();
        const QList<Field *> fields = findChildren<Field *>();
        for (Field *field : fields)
            field->clearError();
        m_patience.start();
    } else {
        m_patience.stop();
        m_progress->hide();
    }
    m_close->setText(busy ? tr("Cancel") : tr("Close"));
    m_signInPage->setEnabled(!busy);
    m_profilePage->setEnabled(!busy);
    // What is disabled loses the focus; the keyboard stays where the user left it.
    if (!busy && m_focusBefore)
        m_focusBefore->setFocus();
}

void SignInWindow::showPage(QWidget *page)
{
    m_signInPage->setVisible(page == m_signInPage);
    m_profilePage->setVisible(page == m_profilePage);
}

void SignInWindow::showSignIn()
{
    showPage(m_signInPage);
    m_notice->withdraw();
    m_signInPage->begin();
}

void SignInWindow::showProfile(const QVariantMap &profile)
{
    m_profilePage->setProfile(profile);
    showPage(m_profilePage);
    m_profilePage->setFocus();
}

// By hand, since a layout's own constraint does not ask wrapped sentences how high they are.
void SignInWindow::fitContents()
{
    constexpr int readableLetters = 46;
    const QMargins margins = layout()->contentsMargins();
    const int wanted =
        readableLetters * fontMetrics().averageCharWidth() + margins.left() + margins.right();
    const int width = qMax(wanted, layout()->totalMinimumSize().width());
    const int height = layout()->totalHeightForWidth(width);
    setFixedSize(width, height > 0 ? height : layout()->totalSizeHint().height());
}
