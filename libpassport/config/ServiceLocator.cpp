// SPDX-License-Identifier: MIT
#include "config/ServiceLocator.h"

std::shared_ptr<ConfigMgr> ServiceLocator::g_cfgMgr;

void ServiceLocator::init()
{
    g_cfgMgr = std::make_shared<ConfigMgr>();
}

void ServiceLocator::release()
{
    g_cfgMgr.reset();
}

std::shared_ptr<ConfigMgr> ServiceLocator::configMgr()
{
    return g_cfgMgr;
}
