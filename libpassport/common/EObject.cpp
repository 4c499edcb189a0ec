// SPDX-License-Identifier: MIT
#include "common/EObject.h"

#include "common/ErrorCommon.h"

EObject::EObject(QObject *parent) : QObject(parent) {}

EObject::~EObject() = default;

unsigned int EObject::lastError() const
{
    return m_lastError;
}

void EObject::setLastError(unsigned int code) const
{
    constexpr unsigned int withoutModule = 0x80000000U;
    m_lastError = ErrorCommon::getModuleCode(code) == 0 ? code | withoutModule : code;
}
