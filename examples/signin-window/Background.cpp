// SPDX-License-Identifier: MIT
#include "Background.h"

using namespace VelqorPassPort;

Background::Background(HostSettings settings) : m_settings(std::move(settings)) {}

Background::~Background()
{
    if (!m_thread)
        return;
    m_thread->quit(); // the library ends the calls of a thread that is told to
    m_thread->wait();
}

bool Background::start(const Job &job)
{
    if (isRunning())
        return false;
    m_thread.reset(QThread::create([settings = m_settings, job] {
        Passport client;
        // Not initial(), which would start another hub where the directory asks for one.
        client.setPassportDir(settings.passportDirectory);
        client.setConfigData(settings.cloud);
        job(client);
    }));
    m_thread->start();
    return true;
}
