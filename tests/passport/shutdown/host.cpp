// SPDX-License-Identifier: MIT
// One way to live and end with a facade: host WHEN INITIAL REQUEST [PLUGIN]. Ends with 0 when it
// got to its end; the sanitizers say the rest.

#include <QtCore/QCoreApplication>
#include <QtCore/QLibrary>
#include <QtCore/QLoggingCategory>
#include <QtCore/QThread>
#include <QtCore/QTimer>
#include <QtNetwork/QTcpServer>

#include <thread>

#include "facade.h"

// Another thread's call, which nobody answers, when the application quits or just goes.
int endUnderCall(QCoreApplication *application, const QStringList &arguments)
{
    QTcpServer silent;
    silent.listen(QHostAddress::LocalHost);
    VelqorPassPort::PassportCommunityError outcome;
    std::thread caller([&] { outcome = Facade(arguments).signIn(silent.serverPort()); });
    if (!silent.waitForNewConnection(10000))
        return 5;
    if (arguments.value(1).startsWith("quit")) {
        QTimer::singleShot(0, qApp, &QCoreApplication::quit);
        QCoreApplication::exec();
    }
    delete application;
    caller.join();
    using Code = VelqorPassPort::CommunityErrorCode;
    return outcome.errorCode == Code::EC_OperationCanceledError ? 0 : 6;
}

int main(int argc, char *argv[])
{
    QLoggingCategory::setFilterRules("*=false");
    auto *application = new QCoreApplication(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const QString when = arguments.value(1);
    const auto loop = [] {
        QTimer::singleShot(0, qApp, &QCoreApplication::quit);
        return QCoreApplication::exec();
    };

    if (when == "unloaded") {
        // The facade comes and goes with its library, and only then the loop runs.
        QLibrary plugin(arguments.value(4));
        const auto live = reinterpret_cast<decltype(&liveOnce)>(plugin.resolve("liveOnce"));
        if (!live)
            return 2;
        live(arguments);
        if (!plugin.unload())
            return 3;
        loop();
    } else if (when == "before the loop") {
        liveOnce(arguments);
        loop();
    } else if (when == "during the loop") {
        QTimer::singleShot(0, qApp, [&] {
            liveOnce(arguments);
            QTimer::singleShot(0, qApp, &QCoreApplication::quit);
        });
        QCoreApplication::exec();
    } else if (when == "after the loop") {
        loop();
        liveOnce(arguments);
    } else if (when == "across the loop") {
        Facade facade(arguments);
        facade.use();
        loop();
    } else if (when == "as the application's child") {
        (new Facade(arguments, application))->use();
    } else if (when == "on another thread") {
        // Made here, moved and destroyed there, while the worker's thread runs its loop.
        QThread there;
        auto *facade = new Facade(arguments);
        facade->use();
        facade->moveToThread(&there);
        QObject::connect(&there, &QThread::finished, facade, &QObject::deleteLater);
        QObject::connect(&there, &QThread::finished, qApp, &QCoreApplication::quit);
        QTimer::singleShot(0, &there, &QThread::quit);
        there.start();
        QCoreApplication::exec();
        there.wait();
    } else if (when == "quit under a call" || when == "end under a call") {
        return endUnderCall(application, arguments);
    } else {
        return 4;
    }
    delete application;
    return 0;
}
