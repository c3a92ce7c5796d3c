// Who the application says it is: name, version and one-line description. Shown by the
// command line's `version` and the About panel.
#pragma once

#include <QString>

namespace tock::AppInfo {
QString name();         // "Tock"
QString versionLine();  // the version number from the build, e.g. "0.1.0"
QString tagline();      // the one-line description
QString appId();        // the reverse-DNS name desktops know Tock by, e.g. "app.tock.Tock"
} // namespace tock::AppInfo
