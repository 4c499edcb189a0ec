// SPDX-License-Identifier: MIT
#pragma once

#include "Export.h"

#include <QtCore/QObject>

/// A QObject that carries a last error code, as a base for the host's own classes.
///
/// The code belongs to no object state that constness protects: it can be set through a const
/// object. One thread at a time; nothing is guarded and nothing is emitted.
class PASSPORT_EXPORT EObject : public QObject
{
    Q_OBJECT

public:
    /// Without an error.
    explicit EObject(QObject *parent = nullptr);
    ~EObject() override;

    /// The stored code: 0 before the first setLastError(), and never 0 after it.
    unsigned int lastError() const;

    /// Stores the code; one without a module byte is marked by setting bit 31, so that a library's
    /// error 6 reads back as 0x80000006, mark included.
    void setLastError(unsigned int code) const;

private:
    mutable unsigned int m_lastError = 0;
};
