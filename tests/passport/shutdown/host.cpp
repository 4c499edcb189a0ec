// One way to live and end with a facade: host WHEN INITIAL REQUEST [PLUGIN]. Ends with 0 when it
// got to its end; the sanitizers say the rest.

#include <QtCore/QCoreApplication>
#include <QtCore/QLibrary>
#include <QtCore/QLoggingCategory>
#include <QtCore/QTimer>

#include "facade.h"

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
        loop();
    } else if (when == "as the application's child") {
        (new Facade(arguments, application))->use();
    } else {
        return 4;
    }
    delete application;
    return 0;
}
