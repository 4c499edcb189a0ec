// SPDX-License-Identifier: MIT
#include "WebLinks.h"

#include "Requests.h"
#include "Words.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QPushButton>

using namespace VelqorPassPort;

namespace {

QPushButton *newLink(const QString &text)
{
    auto *link = new QPushButton(text);
    link->setFlat(true);
    link->setAutoDefault(false);
    link->setCursor(Qt::PointingHandCursor);
    QPalette palette = link->palette();
    for (const auto role : {QPalette::ButtonText, QPalette::WindowText}) {
        for (const auto group : {QPalette::Active, QPalette::Inactive})
            palette.setColor(group, role, palette.color(group, QPalette::Link));
    }
    link->setPalette(palette);
    return link;
}

} // namespace

WebLinks::WebLinks(Requests &requests, const HostSettings &settings, QWidget *parent)
    : QWidget(parent)
    , m_requests(requests)
    , m_toolDirectory(settings.passportDirectory + QStringLiteral("/openweburl"))
    , m_signUp(newLink(tr("Create accou&nt")))
    , m_forgotten(newLink(tr("&Forgotten password?")))
    , m_page(settings)
{
    m_signUp->setObjectName(QStringLiteral("signUp"));
    m_forgotten->setObjectName(QStringLiteral("forgotten"));
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_signUp);
    layout->addStretch();
    layout->addWidget(m_forgotten);
    connect(m_signUp, &QPushButton::clicked, this,
            [this] { open(&Passport::openRegisterURL, QStringLiteral("/sign-up")); });
    connect(m_forgotten, &QPushButton::clicked, this,
            [this] { open(&Passport::openForgitURL, QStringLiteral("/forgotten-password")); });
}

WebLinks::~WebLinks()
{
    if (!m_page.isRunning())
        return;
    // On Linux the library's command for ending the tool finds it from there alone.
    QDir::setCurrent(m_toolDirectory);
    m_requests.passport().exitModule();
}

void WebLinks::open(Flow flow, const QString &page)
{
    // To the library a missing tool is a page that was closed at once.
    const QFileInfo tool(m_toolDirectory +
                         QStringLiteral("/openweburl.app/Contents/MacOS/openweburl"));
    if (!tool.isFile() || !tool.isExecutable()) {
        Q_EMIT failed(tr("The pages for this are not installed."));
        return;
    }
    // The page stays open until its user closes it, who may want to read what it says.
    constexpr bool closes = false;
    const QString language = spokenLanguageTag();
    const bool isOpen = m_page.start([this, flow, page, language](Passport &client) {
        // This object lives on another thread: the signals are queued.
        connect(&client, &Passport::userLoadSuccess, this, &WebLinks::accountBrought);
        connect(&client, &Passport::webpageClosed, this, [this] { setLinksEnabled(true); });
        (client.*flow)(closes, page, language);
    });
    setLinksEnabled(!isOpen);
}

void WebLinks::setLinksEnabled(bool enabled)
{
    m_signUp->setEnabled(enabled);
    m_forgotten->setEnabled(enabled);
}
