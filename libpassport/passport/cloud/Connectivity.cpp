#include "passport/PassportNubelo.h"

namespace VelqorPassPort {

PassportCommunityError PassportNubelo::getNetByStatus()
{
    QVariant ignored;
    return get(ignored, QStringLiteral("status"));
}

} // namespace VelqorPassPort
