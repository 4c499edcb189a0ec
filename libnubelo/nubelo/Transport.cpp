// SPDX-License-Identifier: MIT
#include "nubelo/Transport_p.h"

#include <QtCore/QSocketNotifier>

#include <new>

namespace Nubelo {

namespace {

/// The notifiers of one socket, made when they are needed: most requests never wait for room to
/// write. libcurl may give the socket up while one is just reporting, so they are silenced at once
/// and deleted later.
class SocketWatch : public QObject
{
public:
    using Report = std::function<void(int events)>;

    SocketWatch(curl_socket_t socket, QObject *parent, Report report)
        : QObject(parent)
        , m_socket(socket)
        , m_report(std::move(report))
    {
    }

    void watch(int what)
    {
        set(m_read, QSocketNotifier::Read, (what & CURL_POLL_IN) != 0, CURL_CSELECT_IN);
        set(m_write, QSocketNotifier::Write, (what & CURL_POLL_OUT) != 0, CURL_CSELECT_OUT);
    }

private:
    void set(std::unique_ptr<QSocketNotifier> &notifier, QSocketNotifier::Type type, bool wanted,
             int event)
    {
        if (notifier) {
            notifier->setEnabled(wanted);
        } else if (wanted) {
            notifier = std::make_unique<QSocketNotifier>(m_socket, type);
            connect(notifier.get(), &QSocketNotifier::activated, this,
                    [this, event] { m_report(event); });
        }
    }

    curl_socket_t m_socket;
    Report m_report;
    std::unique_ptr<QSocketNotifier> m_read;
    std::unique_ptr<QSocketNotifier> m_write;
};

} // namespace

void Transport::prepareLibrary()
{
    static const CURLcode once = curl_global_init(CURL_GLOBAL_DEFAULT);
    Q_UNUSED(once)
}

Transport::Transport(QObject *parent)
    : QObject(parent)
    , m_timer(this)
    , m_multi(curl_multi_init(), &curl_multi_cleanup)
{
    if (!m_multi)
        throw std::bad_alloc();
    curl_multi_setopt(m_multi.get(), CURLMOPT_SOCKETFUNCTION, &Transport::onSocket);
    curl_multi_setopt(m_multi.get(), CURLMOPT_SOCKETDATA, this);
    curl_multi_setopt(m_multi.get(), CURLMOPT_TIMERFUNCTION, &Transport::onTimerWanted);
    curl_multi_setopt(m_multi.get(), CURLMOPT_TIMERDATA, this);
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, [this] { act(CURL_SOCKET_TIMEOUT, 0); });
}

Transport::~Transport()
{
    for (const auto &[easy, exchange] : m_exchanges)
        curl_multi_remove_handle(m_multi.get(), easy);
}

void Transport::start(HttpRequest request, const TransferRules &rules, QObject *receiver, Done done)
{
    auto transfer = std::make_unique<Transfer>(std::move(request), rules, m_connections);
    CURL *easy = transfer->handle();
    Exchange &exchange =
        m_exchanges.emplace(easy, Exchange{std::move(transfer), std::move(done), {}}).first->second;
    exchange.receiverGone = connect(receiver, &QObject::destroyed, this, [this, easy] {
        curl_multi_remove_handle(m_multi.get(), easy);
        m_exchanges.erase(easy);
    });
    if (curl_multi_add_handle(m_multi.get(), easy) != CURLM_OK) {
        disconnect(exchange.receiverGone);
        m_exchanges.erase(easy);
        throw std::bad_alloc();
    }
    // Now and not by the timer that libcurl asks for: the request leaves in this turn.
    act(CURL_SOCKET_TIMEOUT, 0);
}

int Transport::onSocket(CURL *easy, curl_socket_t socket, int what, void *transport, void *watch)
{
    Q_UNUSED(easy)
    auto *self = static_cast<Transport *>(transport);
    auto *watched = static_cast<SocketWatch *>(watch);
    if (what == CURL_POLL_REMOVE) {
        if (watched) {
            watched->watch(CURL_POLL_NONE);
            watched->deleteLater();
            curl_multi_assign(self->m_multi.get(), socket, nullptr);
        }
        return 0;
    }
    try {
        if (!watched) {
            watched = new SocketWatch(socket, self,
                                      [self, socket](int events) { self->act(socket, events); });
            curl_multi_assign(self->m_multi.get(), socket, watched);
        }
        watched->watch(what);
        return 0;
    } catch (const std::bad_alloc &) {
        return -1; // ends all transfers: none of them would ever be heard of again
    }
}

int Transport::onTimerWanted(CURLM *multi, long milliseconds, void *transport)
{
    Q_UNUSED(multi)
    QTimer &timer = static_cast<Transport *>(transport)->m_timer;
    if (milliseconds < 0)
        timer.stop();
    else
        timer.start(static_cast<int>(milliseconds));
    return 0;
}

void Transport::act(curl_socket_t socket, int events)
{
    int running = 0;
    curl_multi_socket_action(m_multi.get(), socket, events, &running);
    finishCompleted();
}

void Transport::finishCompleted()
{
    int left = 0;
    while (const CURLMsg *message = curl_multi_info_read(m_multi.get(), &left)) {
        if (message->msg == CURLMSG_DONE)
            finish(message->easy_handle, message->data.result);
    }
}

void Transport::finish(CURL *easy, CURLcode code)
{
    const auto found = m_exchanges.find(easy);
    std::optional<HttpAnswer> answer;
    try {
        m_connections.remember(easy);
        curl_multi_remove_handle(m_multi.get(), easy);
        answer = found->second.transfer->completed(code);
        if (!answer && curl_multi_add_handle(m_multi.get(), easy) != CURLM_OK)
            throw std::bad_alloc();
    } catch (const std::bad_alloc &) {
        // Nobody would see it leave the event loop, and the reply would never end.
        curl_multi_remove_handle(m_multi.get(), easy);
        answer = HttpAnswer{Error::UnknownNetworkError, {}, 0, {}};
    }
    if (!answer)
        return;
    const Exchange ended = std::move(found->second);
    m_exchanges.erase(found);
    disconnect(ended.receiverGone);
    ended.done(*answer);
}

} // namespace Nubelo
