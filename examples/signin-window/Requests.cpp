// SPDX-License-Identifier: MIT
#include "Requests.h"

using namespace VelqorPassPort;

Requests::Requests(Passport &facade, QObject *parent) : QObject(parent), m_passport(facade) {}

PassportCommunityError Requests::run(const Request &request)
{
    if (m_running) {
        PassportCommunityError refused;
        refused.errorCode = CommunityErrorCode::EC_IsRuning;
        return refused;
    }
    m_running = true;
    Q_EMIT busyChanged(true);
    PassportCommunityError outcome = request(m_passport);
    m_running = false;
    Q_EMIT busyChanged(false);
    return outcome;
}
