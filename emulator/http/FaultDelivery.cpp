// SPDX-License-Identifier: MIT
#include "http/FaultDelivery.h"

#include "http/Connection.h"
#include "http/WorkerWait.h"

#include <httplib.h>

#include <algorithm>

namespace {

// A status line alone would not do: there are clients that silently repeat a request whose
// kept-alive connection closed before the first whole header, and clients that take a missing
// length for an empty answer.
std::string startOfHeaders(std::size_t bodyBytes)
{
    return "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(bodyBytes) +
           "\r\nContent-Type: appl";
}

void deliverHalf(const std::string &body, const std::string &contentType,
                 httplib::Response &response)
{
    response.set_content_provider(body.size(), contentType,
                                  [body](std::size_t, std::size_t, httplib::DataSink &sink) {
                                      sink.write(body.data(), body.size() / 2);
                                      return false;
                                  });
}

void drip(const std::string &body, const std::string &contentType, int bytesPerSecond,
          const Connection &client, WorkerWait &wait, httplib::Response &response)
{
    const int pieceBytes = std::max(bytesPerSecond / 10, 1);
    const std::chrono::milliseconds pause(1000 * pieceBytes / bytesPerSecond);
    response.set_content_provider(
        body.size(), contentType,
        [=, &wait](std::size_t offset, std::size_t, httplib::DataSink &sink) {
            const auto size = std::min(body.size() - offset, static_cast<std::size_t>(pieceBytes));
            sink.write(body.data() + offset, size);
            return wait.sleep(pause, client);
        });
}

} // namespace

void deliver(const Answer &answer, const Connection &client, WorkerWait &wait,
             httplib::Response &response)
{
    const Delivery delivery = answer.delivery;
    if (delivery.delay.count() > 0)
        wait.sleep(delivery.delay, client);
    response.status = answer.httpStatus;
    for (const auto &[name, value] : answer.headers)
        response.set_header(name.toStdString(), value.toStdString());

    const std::string body = answer.body.toStdString();
    const std::string contentType = answer.contentType.toStdString();
    switch (body.empty() ? Delivery::Manner::Whole : delivery.manner) {
    case Delivery::Manner::HalfBody:
        deliverHalf(body, contentType, response);
        return;
    case Delivery::Manner::Drip:
        drip(body, contentType, delivery.bytesPerSecond, client, wait, response);
        return;
    case Delivery::Manner::Drop:
        client.closeAfter(startOfHeaders(body.size()));
        break;
    case Delivery::Manner::Whole:
        break;
    }
    response.set_content(body, contentType);
}
