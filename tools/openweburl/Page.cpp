// SPDX-License-Identifier: MIT
#include "Page.h"

#include <QtWebEngineWidgets/QWebEngineScript>
#include <QtWebEngineWidgets/QWebEngineScriptCollection>

#include <utility>

namespace {

// Stands in each document that was loaded, where the page's own scripts do not see it.
const QString mark = QStringLiteral("window.openweburlLoaded");
constexpr quint32 ownWorld = QWebEngineScript::ApplicationWorld;

// Written to the console as a document begins: the engine itself tells only of the end of a load,
// which one picture can hold up for minutes. A page that writes it too says nothing untrue.
const QString begun = QStringLiteral("openweburl: begun");

Page::Failure failureNamed(const QString &error)
{
    if (error.startsWith(QLatin1String("ERR_CERT_")))
        return Page::Failure::NotTrusted;
    const bool isUnknown = error.startsWith(QLatin1String("ERR_NAME_")) ||
                           error == QLatin1String("ERR_FILE_NOT_FOUND") ||
                           error == QLatin1String("ERR_UNSAFE_PORT");
    return isUnknown ? Page::Failure::NotFound : Page::Failure::NoAnswer;
}

} // namespace

Page::Page(QWebEngineProfile *profile, std::optional<std::chrono::milliseconds> reloadTimeout,
           QObject *parent)
    : QWebEnginePage(profile, parent)
    , m_state(std::make_shared<State>())
{
    watchDocuments();
    m_state->retries = reloadTimeout.has_value();
    QTimer *timer = &m_state->timer;
    timer->setSingleShot(true);
    timer->setInterval(reloadTimeout.value_or(std::chrono::milliseconds::zero()));
    connect(timer, &QTimer::timeout, this, &Page::loadAgain);
    connect(this, &QWebEnginePage::loadStarted, timer, [state = m_state.get()] {
        ++state->loads;
        state->timer.stop();
    });
    connect(this, &QWebEnginePage::loadFinished, this,
            [this](bool loaded) { loaded ? noteLoaded() : noteFailed(); });
    connect(this, &QWebEnginePage::renderProcessTerminated, timer, [this] {
        if (m_state->retries)
            m_state->timer.start();
        Q_EMIT failed(Failure::NoAnswer);
    });
}

void Page::begin(const QUrl &url)
{
    m_first = url;
    load(url);
}

QUrl Page::wanted() const
{
    const QUrl url = requestedUrl();
    return url.isEmpty() ? m_first : url; // the engine forgets a first page that led nowhere
}

void Page::loadAgain()
{
    load(wanted()); // rather than a repetition, which would send a form twice
}

void Page::watchDocuments()
{
    QWebEngineScript script;
    script.setInjectionPoint(QWebEngineScript::DocumentCreation);
    script.setWorldId(ownWorld);
    // The window says what is wrong; the engine's own page would show and be read out first.
    script.setSourceCode(QStringLiteral(R"(
        if (location.protocol === 'chrome-error:') {
            const sheet = new CSSStyleSheet();
            sheet.replaceSync('html { display: none }');
            document.adoptedStyleSheets = [sheet];
        } else if (location.protocol !== 'about:') {
            console.info('%1');
        })")
                             .arg(begun));
    scripts().insert(script);
}

// An answer may come when the page is being destroyed, or after another load began.
Page::Answer Page::unlessOutdated(Answer answer) const
{
    return [weak = std::weak_ptr<State>(m_state), loads = m_state->loads,
            answer = std::move(answer)](const QVariant &value) {
        const std::shared_ptr<State> state = weak.lock();
        if (state && state->loads == loads)
            answer(value);
    };
}

void Page::noteLoaded()
{
    m_state->wasShown = true;
    runJavaScript(mark + QStringLiteral(" = true"), ownWorld);
    measure(false);
}

void Page::measure(bool isRefusal)
{
    const QString size = QStringLiteral("[document.documentElement.scrollWidth, "
                                        "document.documentElement.scrollHeight]");
    runJavaScript(size, ownWorld, unlessOutdated([this, isRefusal](const QVariant &answer) {
                      const QVariantList sides = answer.toList();
                      Q_EMIT measured({sides.value(0).toInt(), sides.value(1).toInt()}, isRefusal);
                  }));
}

// A load that was only broken off, as by a link to a mail address or to a file that is downloaded,
// counts as failed too, but leaves the document, and what the user typed into it, as it was.
void Page::noteFailed()
{
    // Of the engine's error page, which has an address of its own, the error's name is all that
    // can be learned of a failure. It has a place of its own: the address may look like an error.
    const QString state = mark + QStringLiteral(R"( ? 'shown'
        : !/^(chrome-error|about):/.test(location) ? 'answered'
        : (document.querySelector('.error-code')?.textContent.match(/ERR_[A-Z_]+/)
           || ['ERR_'])[0])");
    runJavaScript(state, ownWorld,
                  unlessOutdated([this](const QVariant &answer) { judge(answer.toString()); }));
}

void Page::judge(const QString &state)
{
    const bool isNothing = state.startsWith(QLatin1String("ERR_"));
    const bool isNew = !m_state->wasShown && state != QLatin1String("shown");
    if (m_state->retries && (isNothing || isNew))
        m_state->timer.start();
    if (isNothing)
        Q_EMIT failed(failureNamed(state));
    else if (state == QLatin1String("answered"))
        measure(true);
}

bool Page::acceptNavigationRequest(const QUrl &url, NavigationType type, bool isMainFrame)
{
    Q_UNUSED(type)
    const QString scheme = url.scheme();
    if (scheme == QLatin1String("openweburl"))
        return false; // not a page
    return !isMainFrame || scheme == QLatin1String("http") || scheme == QLatin1String("https") ||
           (m_first.isLocalFile() && url.isLocalFile());
}

void Page::javaScriptConsoleMessage(JavaScriptConsoleMessageLevel level, const QString &message,
                                    int line, const QString &source)
{
    Q_UNUSED(level)
    Q_UNUSED(line)
    Q_UNUSED(source)
    if (message == begun)
        Q_EMIT shown();
}
