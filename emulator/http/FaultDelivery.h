// SPDX-License-Identifier: MIT
#pragma once

#include "http/Answer.h"

class Connection;
class WorkerWait;

namespace httplib {
struct Response;
} // namespace httplib

/// Gives an answer to the server in the manner that its Delivery asks for, on the request's worker
/// thread. `wait` must live as long as the server.
void deliver(const Answer &answer, const Connection &client, WorkerWait &wait,
             httplib::Response &response);
