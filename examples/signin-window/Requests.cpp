#include "Requests.h"

#include <QtCore/QScopedValueRollback>
#include <QtWidgets/QApplication>

using namespace VelqorPassPort;

Requests::Requests(Passport &facade, QObject *parent) : QObject(parent), m_passport(facade) {}

PassportCommunityError Requests::run(const Request &request)
{
    if (m_running) {
        PassportCommunityError refused;
        refused.errorCode = CommunityErrorCode::EC_IsRuning;
        return refused;
    }
    // A disabled widget loses the focus: a starter gets it back, so that the keyboard stays where
    // the user left it.
    QWidget *const focused = QApplication::focusWidget();
    const QScopedValueRollback<bool> running(m_running, true);
    setStartersEnabled(false);
    Q_EMIT busyChanged(true);
    const PassportCommunityError outcome = request();
    setStartersEnabled(true);
    if (m_starters.contains(focused))
        focused->setFocus();
    Q_EMIT busyChanged(false);
    return outcome;
}

void Requests::setStartersEnabled(bool enabled)
{
    for (QWidget *starter : qAsConst(m_starters))
        starter->setEnabled(enabled);
}
