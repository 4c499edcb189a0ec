// SPDX-License-Identifier: MIT
#include "nubelo/AnswerReader_p.h"

#include "nubelo/Log_p.h"

#include <algorithm>

namespace Nubelo {

namespace {

constexpr int sectionLimit = 64 * 1024;

bool isNumber(const QByteArray &text)
{
    return !text.isEmpty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

} // namespace

void AnswerReader::expectAnswer()
{
    const bool hasBegun = m_hasBegun;
    *this = AnswerReader(m_bodyLimit);
    m_hasBegun = hasBegun;
}

bool AnswerReader::takeLine(const QByteArray &line)
{
    m_hasBegun = true;
    if (!m_isHeaderComplete && line.startsWith("HTTP/"))
        m_status = line.mid(line.indexOf(' ') + 1, 3).toInt();
    int &bytes = m_isHeaderComplete  ? m_trailerBytes
                 : isInformational() ? m_informationalBytes
                                     : m_headerBytes;
    bytes += line.size();
    if (bytes > sectionLimit)
        return refuse(Error::RemoteHostClosedError, "header lines without end");
    if (m_isHeaderComplete)
        return true;
    // Nobody asked for another protocol, and what follows would be taken for a body.
    if (m_status == 101)
        return refuse(Error::ProtocolFailure, "an answer in another protocol");
    if (!isInformational() && !isLengthClear(line))
        return refuse(Error::ProtocolFailure, "an answer with two lengths");
    m_isHeaderComplete = line.trimmed().isEmpty() && !isInformational();
    return true;
}

// libcurl takes one of several lengths, and whatever stands between here and the service may take
// the other.
bool AnswerReader::isLengthClear(const QByteArray &line)
{
    const int colon = line.indexOf(':');
    if (line.left(colon).trimmed().compare("content-length", Qt::CaseInsensitive) != 0)
        return true;
    const QList<QByteArray> lengths = line.mid(colon + 1).split(',');
    return std::all_of(lengths.begin(), lengths.end(), [this](const QByteArray &field) {
        const QByteArray length = field.trimmed();
        const bool isFirst = m_length.isEmpty();
        if (isFirst)
            m_length = length;
        return isNumber(length) && length == m_length;
    });
}

bool AnswerReader::takeBody(const char *data, qint64 size)
{
    if (m_body.size() + size > m_bodyLimit)
        return refuse(Error::RemoteHostClosedError, "a body over limits.answerBytes");
    m_body.append(data, static_cast<int>(size));
    return true;
}

bool AnswerReader::refuse(Error::ErrorCode fault, const char *reason)
{
    qCWarning(logNubelo) << "answer refused:" << reason;
    m_fault = fault;
    return false;
}

} // namespace Nubelo
