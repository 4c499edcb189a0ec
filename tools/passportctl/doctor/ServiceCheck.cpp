// SPDX-License-Identifier: MIT
#include "Checks.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QUrl>

#include <algorithm>
#include <vector>

using namespace VelqorPassPort;

namespace {

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

} // namespace

QString withoutUser(const QString &address)
{
    return QUrl(address).toString(QUrl::RemoveUserInfo);
}

// The first request pays for the connection; the rest show what a request costs afterwards.
PassportCommunityError checkService(Host &host, Findings &findings)
{
    constexpr int times = 6;
    std::vector<double> milliseconds;
    QVariant result;
    for (int i = 0; i < times; ++i) {
        QElapsedTimer clock;
        clock.start();
        PassportCommunityError record = host.requestStatus(result);
        if (record.isError())
            return record;
        milliseconds.push_back(static_cast<double>(clock.nsecsElapsed()) / 1e6);
    }
    const QString unit = QStringLiteral("ms");
    findings.addFact(
        "service", QStringLiteral("service"),
        result.toMap().value(QStringLiteral("service"), QStringLiteral("answers")).toString());
    findings.addFact("firstAnswerMs", QStringLiteral("first answer"), milliseconds.front(), unit);
    milliseconds.erase(milliseconds.begin());
    findings.addFact("nextAnswersMs", QStringLiteral("next answers"), median(milliseconds), unit);
    return {};
}

void addFailure(const QString &where, const PassportCommunityError &record, Findings &findings)
{
    const ErrorText text(record);
    findings.addError(exitOf(record), where, text.sentence(), text.advice);
}
