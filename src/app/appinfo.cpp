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
    return QStringLiteral("Named count-up timers in one small window");
}

} // namespace tock::AppInfo
