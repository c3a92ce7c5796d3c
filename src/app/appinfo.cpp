#include "appinfo.h"

#include "appinfo_version.h"

namespace tock::AppInfo {

QString name()
{
    return QStringLiteral("Tock");
}

QString versionLine()
{
    return QStringLiteral(TOCK_VERSION_STRING);
}

QString tagline()
{
    return QStringLiteral(TOCK_TAGLINE);
}

QString appId()
{
    return QStringLiteral(TOCK_APP_ID);
}

} // namespace tock::AppInfo
