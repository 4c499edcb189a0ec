// SPDX-License-Identifier: MIT
#include <passport/PassportNubelo.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDebug>

#include <cstdio>

// Usage: host URL. Prints what the address answers, or the error's name.
int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    VelqorPassPort::PassportNubelo client;
    QVariant result;
    const auto record =
        client.requestNubelo(result, application.arguments().value(1), Nubelo::Manager::Get);
    std::printf("%s\n", qPrintable(record.errorCode == VelqorPassPort::CommunityErrorCode::NoError
                                       ? result.toString()
                                       : record.errorName));
    return record.errorCode;
}
