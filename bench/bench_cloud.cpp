// SPDX-License-Identifier: MIT
// The cost of one small POST on a kept-alive loopback connection, through the account client and
// through a bare libcurl easy handle, both against the same server in the same run.

#include "passport/Passport.h"
#include "passport/PassportNubelo.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QLoggingCategory>

#include <benchmark/benchmark.h>
#include <curl/curl.h>

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

namespace {

/// Answers every request on every connection at once with the same bytes; one blocking thread each.
class Server
{
public:
    Server()
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto *any = reinterpret_cast<sockaddr *>(&address);
        m_listener = ::socket(AF_INET, SOCK_STREAM, 0);
        if (::bind(m_listener, any, size) != 0 || ::listen(m_listener, 16) != 0 ||
            ::getsockname(m_listener, any, &size) != 0)
            std::abort();
        m_port = ntohs(address.sin_port);
        std::thread([listener = m_listener] {
            for (int socket = 0; (socket = ::accept(listener, nullptr, nullptr)) >= 0;)
                std::thread(&Server::serve, socket).detach();
        }).detach();
    }

    std::string url() const { return "http://127.0.0.1:" + std::to_string(m_port); }

private:
    static void serve(int socket)
    {
        const std::string body = R"({"status":"ok","result":"x"})";
        const std::string answer =
            "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: " +
            std::to_string(body.size()) + "\r\n\r\n" + body;
        const int on = 1;
        ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        std::string request;
        char buffer[4096];
        for (ssize_t got = 0; (got = ::read(socket, buffer, sizeof buffer)) > 0;) {
            request.append(buffer, static_cast<std::size_t>(got));
            // Every request of this program ends with the one member of its body.
            if (request.size() < 8 || request.compare(request.size() - 8, 8, R"("ada!!"})") != 0)
                continue;
            request.clear();
            if (::write(socket, answer.data(), answer.size()) < 0)
                break;
        }
        ::close(socket);
    }

    int m_listener = -1;
    int m_port = 0;
};

Server &server()
{
    static Server instance;
    return instance;
}

std::size_t store(char *data, std::size_t size, std::size_t count, void *into)
{
    static_cast<std::string *>(into)->append(data, size * count);
    return size * count;
}

void bareEasyHandle(benchmark::State &state)
{
    CURL *easy = curl_easy_init();
    const std::string url = server().url() + "/user/login";
    const std::string body = R"({"username":"ada!!"})";
    std::string answer;
    curl_slist *headers = curl_slist_append(nullptr, "Content-Type: application/json");
    curl_easy_setopt(easy, CURLOPT_URL, url.c_str());
    curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headers);
    curl_easy_setopt(easy, CURLOPT_POSTFIELDS, body.c_str());
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &store);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, &answer);
    for (auto _ : state) {
        answer.clear();
        if (curl_easy_perform(easy) != CURLE_OK || answer.empty())
            state.SkipWithError("the request failed");
    }
    curl_slist_free_all(headers);
    curl_easy_cleanup(easy);
}

void requestNubelo(benchmark::State &state)
{
    VelqorPassPort::PassportNubelo client;
    const QVariantMap sources{{QStringLiteral("cloud"), QString::fromStdString(server().url())}};
    client.setConfigData(QVariantMap{
        {QStringLiteral("cloudEnvironment"), QStringLiteral("bench")},
        {QStringLiteral("environments"), QVariantMap{{QStringLiteral("bench"), sources}}}});
    const QVariantMap body{{QStringLiteral("username"), QStringLiteral("ada!!")}};
    QVariant result;
    for (auto _ : state) {
        const auto record = client.requestNubelo(
            result, QStringLiteral("userLogin"), Nubelo::Manager::Post, Nubelo::Manager::NoEncrypt,
            body, QVariantMap(), QVariantMap(), QStringLiteral("cloud"));
        if (record.isError())
            state.SkipWithError("the request failed");
    }
}

void facade(benchmark::State &state)
{
    for ([[maybe_unused]] auto _ : state) {
        VelqorPassPort::Passport passport;
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

} // namespace

// Real time: most of a request is spent waiting for the other side.
BENCHMARK(requestNubelo)->Name("small POST/1/ours")->UseRealTime();
BENCHMARK(bareEasyHandle)->Name("small POST/1/peer")->UseRealTime();
BENCHMARK(facade)->Name("facade, constructed and destroyed/1/ours")->UseRealTime();

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("velqor.passport.lib=false"));
    curl_global_init(CURL_GLOBAL_DEFAULT);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
