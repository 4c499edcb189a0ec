// SPDX-License-Identifier: MIT
#pragma once

#include "nubelo/Error.h"

#include <QtCore/QByteArray>

namespace Nubelo {

/// Takes in what comes back for a request: header lines, the body, trailers. Bounded whatever the
/// peer sends: 64 KiB each for the header, for all 1xx answers together and for the trailers, and
/// the configured limit for the body.
///
/// The take functions return false when the transfer is to end; fault() then says why.
class AnswerReader
{
public:
    explicit AnswerReader(qint64 bodyLimit) : m_bodyLimit(bodyLimit) {}

    /// The request is about to leave. What came before was a proxy's word about the tunnel.
    void expectAnswer();

    /// One line with its line end.
    bool takeLine(const QByteArray &line);
    bool takeBody(const char *data, qint64 size);

    bool hasBegun() const { return m_hasBegun; } ///< anything has come, be it from a proxy
    bool isHeaderComplete() const { return m_isHeaderComplete; }
    const QByteArray &body() const { return m_body; }
    Error::ErrorCode fault() const { return m_fault; }

private:
    bool refuse(Error::ErrorCode fault, const char *reason);
    bool isLengthClear(const QByteArray &line);
    bool isInformational() const { return m_status >= 100 && m_status < 200; }

    qint64 m_bodyLimit;
    QByteArray m_body;
    QByteArray m_length;
    int m_status = 0;
    int m_headerBytes = 0;
    int m_informationalBytes = 0;
    int m_trailerBytes = 0;
    bool m_hasBegun = false;
    bool m_isHeaderComplete = false;
    Error::ErrorCode m_fault = Error::NoError;
};

} // namespace Nubelo
